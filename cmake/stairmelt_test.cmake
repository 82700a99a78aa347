# stairmelt_test(LABEL sources...): one test program, registered with ctest under its label. A start under Wine costs
# about a third of a second, so a program holds all the cases of its label. Tests run in tests/, where golden/ is.
#
# What is tested is compiled as the preset says. The tests themselves run for a moment and take minutes to optimise.
function(stairmelt_test_options target)
    target_link_libraries(${target} PRIVATE project_options gtest)
    if(NOT MSVC)
        target_compile_options(${target} PRIVATE -O0)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC 12 sees overlapping copies in every concatenation of strings.
        target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    if(MINGW)
        target_compile_options(${target} PRIVATE -Wa,-mbig-obj)
    endif()
endfunction()

function(stairmelt_test label)
    add_executable(${label}_test ${ARGN})
    stairmelt_test_options(${label}_test)
    target_link_libraries(${label}_test PRIVATE gtest_main)
    add_test(NAME ${label} COMMAND ${label}_test WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}/tests)
    set_tests_properties(${label} PROPERTIES LABELS ${label} TIMEOUT 600)
endfunction()
