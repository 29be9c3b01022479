# qoro_discover_suites(PROGRAM [PROPERTY VALUE…]): adds a test for each suite of a GoogleTest program, which runs the
# suite in one process. gtest_discover_tests starts a process for each test; where most of a test's time is the start of
# the desktop's libraries, that takes ten times as long.
#
# As with gtest_discover_tests' PRE_TEST mode, the program is asked for its suites when ctest runs.
function(qoro_discover_suites program)
    string(REPLACE ";" "]==] [==[" properties "${ARGN}")
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${program}_suites.cmake)
    file(GENERATE OUTPUT ${script} CONTENT "
if(NOT EXISTS [==[$<TARGET_FILE:${program}>]==])
    add_test(${program}_NOT_BUILT [==[$<TARGET_FILE:${program}>]==])
    return()
endif()
execute_process(COMMAND [==[$<TARGET_FILE:${program}>]==] --gtest_list_tests
                OUTPUT_VARIABLE listed RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR \"${program}: expected a list of its tests, got status \${status}\")
endif()
string(REGEX MATCHALL \"(^|\\n)[^ \\n]+\\\\.\" suites \"\${listed}\")
foreach(suite IN LISTS suites)
    string(STRIP \"\${suite}\" suite)
    string(REGEX REPLACE \"\\\\.$\" \"\" name \"\${suite}\")
    add_test(\"\${name}\" [==[$<TARGET_FILE:${program}>]==] \"--gtest_filter=\${suite}*\")
    set_tests_properties(\"\${name}\" PROPERTIES [==[${properties}]==])
endforeach()
")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${script})
endfunction()
