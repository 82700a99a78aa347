# stairmelt_test(LABEL sources...): one test program, registered with ctest under its label. A start under Wine costs
# about a third of a second, so a program holds all the cases of its label. Tests run in tests/, where golden/ is.
function(stairmelt_test label)
    add_executable(${label}_test ${ARGN})
    target_link_libraries(${label}_test PRIVATE project_options gtest_main)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC 12 sees overlapping copies in every concatenation of strings.
        target_compile_options(${label}_test PRIVATE -Wno-restrict)
    endif()
    if(MINGW)
        target_compile_options(${label}_test PRIVATE -Wa,-mbig-obj)
    endif()
    add_test(NAME ${label} COMMAND ${label}_test WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}/tests)
    set_tests_properties(${label} PROPERTIES LABELS ${label} TIMEOUT 600)
endfunction()
