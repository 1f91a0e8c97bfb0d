# korvane_add_test(NAME SOURCES ... [LIBRARIES ...] [LABELS ...] [ENVIRONMENT ...] [WRAPPER command...]): one test program
# with its own line in ctest. It links the static library, so it sees private parts. Labels: "gpu" needs a display with
# EGL (the wrapper brings one), "jvm" needs a Java virtual machine; both stay on the desktop's own processor. "threads"
# is what the thread sanitizer runs.
function(korvane_add_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES;LABELS;ENVIRONMENT;WRAPPER" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    korvane_configure_target(${name})
    target_link_libraries(${name} PRIVATE korvane_test_support GTest::gtest_main ${arg_LIBRARIES})
    add_test(NAME ${name} COMMAND ${arg_WRAPPER} ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${name}>)
    set_tests_properties(${name} PROPERTIES LABELS "${arg_LABELS}" ENVIRONMENT "${arg_ENVIRONMENT}" TIMEOUT 600)
endfunction()
