# stairmelt_test(LABEL sources...): a test program with all cases of its label, since each start under Wine takes about a
# third of a second. It is registered with ctest under the label and runs in tests/, where golden/ is.
#
# The code under test is compiled as the preset says, but the tests aren't optimised: that takes minutes and saves little.
function(stairmelt_test_options target)
    target_link_libraries(${target} PRIVATE project_options gtest)
    if(NOT MSVC)
        target_compile_options(${target} PRIVATE -O0)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC 12 wrongly reports overlapping copies in concatenations of strings.
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
