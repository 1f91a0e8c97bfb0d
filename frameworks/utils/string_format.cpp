// SPDX-License-Identifier: Apache-2.0
#include "frameworks/utils/string_format.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "frameworks/core/memory.h"

namespace {
constexpr size_t kBufferBytes = 2048;
char gBuffer[kBufferBytes];
}  // namespace

char* string_format(const char* fmt, ...) {
    galloc_memset(gBuffer, 0, kBufferBytes);
    va_list arguments;
    va_start(arguments, fmt);
    const int length = std::vsnprintf(gBuffer, kBufferBytes, fmt, arguments);
    va_end(arguments);
    if (length >= static_cast<int>(kBufferBytes)) {
        std::abort();
    }
    return gBuffer;
}
