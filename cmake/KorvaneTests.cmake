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

# korvane_add_jvm_test(NAME SOURCES ... [LABELS ...] [ENVIRONMENT ...] [WRAPPER ...]): a test program that starts a Java
# virtual machine in its own process (tests/support/jvm.h). The native methods come from libkorvane.so, as in an
# application. A warning of -Xcheck:jni fails the test.
function(korvane_add_jvm_test name)
    if(NOT KORVANE_BUILD_JAVA)
        return()
    endif()
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES;LABELS;ENVIRONMENT;WRAPPER" ${ARGN})
    # The virtual machine uses SIGSEGV for its own ends and never frees what it holds.
    korvane_add_test(${name} SOURCES ${arg_SOURCES} LIBRARIES korvane_jvm_support ${arg_LIBRARIES}
                     LABELS jvm ${arg_LABELS}
                     ENVIRONMENT "ASAN_OPTIONS=handle_segv=0:handle_sigbus=0:allow_user_segv_handler=1:detect_leaks=0"
                                 ${arg_ENVIRONMENT}
                     WRAPPER ${arg_WRAPPER})
    add_dependencies(${name} korvane korvane_java korvane_test_java)
    set_tests_properties(${name} PROPERTIES
        FAIL_REGULAR_EXPRESSION "WARNING in native method;FATAL ERROR in native method")
endfunction()
