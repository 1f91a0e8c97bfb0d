# SPDX-License-Identifier: Apache-2.0
# 64-bit ARM Linux with the phones' compiler: clang, which has one vector target, NEON. Debian's cross g++ brings the C
# library and the linker.
include("${CMAKE_CURRENT_LIST_DIR}/../../cmake/aarch64-linux-gnu.cmake")
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
foreach(language C CXX ASM)
    set(CMAKE_${language}_COMPILER_TARGET aarch64-linux-gnu)
endforeach()
