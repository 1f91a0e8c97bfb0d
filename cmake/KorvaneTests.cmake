# SPDX-License-Identifier: Apache-2.0
# korvane_add_test(NAME SOURCES ... [LIBRARIES ...] [LABELS ...] [ENVIRONMENT ...] [WRAPPER command...]): one test program
# with its own line in ctest. Test and program are called NAME; the target is korvane_NAME, so that it cannot clash with
# one of a project that takes this one in. It links the static library, so it sees private parts. Labels: "gpu" needs a
# display with EGL (the wrapper brings one), "jvm" needs a Java virtual machine; both stay on the desktop's own
# processor. "threads" is what the thread sanitizer runs.
add_custom_target(korvane_thread_tests)
set(KORVANE_TEST_TIMEOUT 600)
if(KORVANE_SANITIZE MATCHES thread)
    set(KORVANE_TEST_TIMEOUT 3600)
endif()
function(korvane_add_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES;LABELS;ENVIRONMENT;WRAPPER" ${ARGN})
    set(target korvane_${name})
    add_executable(${target} ${arg_SOURCES})
    set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name})
    korvane_configure_target(${target})
    target_link_libraries(${target} PRIVATE korvane_test_support GTest::gtest_main ${arg_LIBRARIES})
    if(KORVANE_BULK_BUILD)
        # Sharing them takes equal flags; both compilers make position independent programs by themselves.
        set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
        target_precompile_headers(${target} REUSE_FROM korvane_test_support)
    endif()
    add_test(NAME ${name} COMMAND ${arg_WRAPPER} ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${target}>)
    set_tests_properties(${name} PROPERTIES LABELS "${arg_LABELS}" ENVIRONMENT "${arg_ENVIRONMENT}" TIMEOUT ${KORVANE_TEST_TIMEOUT})
    if("threads" IN_LIST arg_LABELS)
        add_dependencies(korvane_thread_tests ${target})
    endif()
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
    add_dependencies(korvane_${name} korvane korvane_java korvane_test_java)
    set_tests_properties(${name} PROPERTIES
        FAIL_REGULAR_EXPRESSION "WARNING in native method;FATAL ERROR in native method;WARNING: JNI")
endfunction()

# korvane_add_gpu_test(NAME SOURCES ... [LABELS ...] [ENVIRONMENT ...]): a test program that draws through EGL on a
# virtual X server of its own, with tests/support/gl_recorder.h in between; on Mesa's llvmpipe and once more, as
# NAME_softpipe, on its plain rasteriser. A program without a context must fail. -noreset keeps the server from starting
# anew when its last client leaves, as happens when an EGL display is terminated. The reduced processor keeps llvmpipe
# from computing mediump in 16 bits, as it does where the processor has F16C, so that exact comparisons hold everywhere.
set(KORVANE_GPU_WRAPPER xvfb-run -a -s "-noreset -screen 0 640x480x24")
set(KORVANE_GPU_ENVIRONMENT GALLIUM_OVERRIDE_CPU_CAPS=sse4.1
                            "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp")
function(korvane_add_gpu_test name)
    if(CMAKE_CROSSCOMPILING)
        return()
    endif()
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES;LABELS;ENVIRONMENT" ${ARGN})
    # The address sanitizer guesses where the threads of a loaded driver keep their own memory, and its leak check crashed
    # on a wrong guess; so it does not guess.
    list(PREPEND arg_ENVIRONMENT ${KORVANE_GPU_ENVIRONMENT} ASAN_OPTIONS=intercept_tls_get_addr=0)
    korvane_add_test(${name} SOURCES ${arg_SOURCES} LIBRARIES korvane_gpu_support ${arg_LIBRARIES}
                     LABELS gpu ${arg_LABELS}
                     ENVIRONMENT GALLIUM_DRIVER=llvmpipe ${arg_ENVIRONMENT}
                     WRAPPER ${KORVANE_GPU_WRAPPER})
    add_test(NAME ${name}_softpipe COMMAND ${KORVANE_GPU_WRAPPER} $<TARGET_FILE:korvane_${name}>)
    set_tests_properties(${name}_softpipe PROPERTIES
        LABELS "gpu;${arg_LABELS}" TIMEOUT ${KORVANE_TEST_TIMEOUT}
        ENVIRONMENT "GALLIUM_DRIVER=softpipe;${arg_ENVIRONMENT}")
endfunction()

# korvane_add_jvm_gpu_test(NAME SOURCES ...): a JVM test whose library draws, on both of Mesa's drivers as above. The
# library's log goes to standard error, where the test reads it.
function(korvane_add_jvm_gpu_test name)
    korvane_add_jvm_test(${name} ${ARGN} LABELS gpu ENVIRONMENT ${KORVANE_GPU_ENVIRONMENT} KORVANE_LOG=1
                         GALLIUM_DRIVER=llvmpipe WRAPPER ${KORVANE_GPU_WRAPPER})
    if(NOT TARGET korvane_${name})
        return()
    endif()
    if(KORVANE_SANITIZE MATCHES thread)
        # What tests/tsan.supp names may not be unloaded.
        target_sources(korvane_${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests/support/driver_modules.cpp")
    endif()
    add_test(NAME ${name}_softpipe COMMAND ${KORVANE_GPU_WRAPPER} $<TARGET_FILE:korvane_${name}>)
    foreach(property LABELS TIMEOUT ENVIRONMENT FAIL_REGULAR_EXPRESSION)
        get_test_property(${name} ${property} value)
        string(REPLACE GALLIUM_DRIVER=llvmpipe GALLIUM_DRIVER=softpipe value "${value}")
        set_tests_properties(${name}_softpipe PROPERTIES ${property} "${value}")
    endforeach()
endfunction()
