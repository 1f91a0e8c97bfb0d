# SPDX-License-Identifier: Apache-2.0
# Compiler settings shared by every target of the project.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

function(korvane_configure_target target)
    # Contraction is off everywhere: scalar, SIMD, x86-64 and 64-bit ARM must give equal bytes, and a fused
    # multiply-add rounds once where two operations round twice.
    target_compile_options(${target} PRIVATE -ffp-contract=off -Wall -Wextra -Wconversion)
    if(KORVANE_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    # Highway's AVX-512 with the byte permutations of newer processors; it leaves this target out unless asked.
    target_compile_definitions(${target} PRIVATE HWY_WANT_AVX3_DL)
    if(KORVANE_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${KORVANE_SANITIZE} -fno-sanitize-recover=all
                                                 -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${KORVANE_SANITIZE})
        target_compile_definitions(${target} PRIVATE KORVANE_SANITIZED
                                                     "HWY_DISABLED_TARGETS=(${KORVANE_SANITIZE_WITHOUT})")
    endif()
    target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
endfunction()
