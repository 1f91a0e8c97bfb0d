// SPDX-License-Identifier: Apache-2.0
#include "frameworks/core/memory.h"

#include <cstdlib>
#include <cstring>

void* galloc_malloc(unsigned long size) {
    return size == 0 ? nullptr : std::malloc(size);
}

void* galloc_malloc_leap(unsigned long size, const char* /*file*/, unsigned int /*line*/) {
    return galloc_malloc(size);
}

void* galloc_alloc(unsigned long size) {
    return size == 0 ? nullptr : std::calloc(1, size);
}

void* galloc_alloc_leap(unsigned long size, const char* /*file*/, unsigned int /*line*/) {
    return galloc_alloc(size);
}

void* galloc_realloc(void* ptr, unsigned long size) {
    if (ptr == nullptr || size == 0) {
        return nullptr;
    }
    return std::realloc(ptr, size);
}

void* galloc_realloc_leap(void* ptr, unsigned long size, const char* /*file*/, unsigned int /*line*/) {
    return galloc_realloc(ptr, size);
}

void galloc_free(void* ptr) {
    std::free(ptr);
}

void galloc_free_leap(void* ptr) {
    galloc_free(ptr);
}

void galloc_memcpy(void* dst, const void* src, unsigned long n) {
    if (dst != nullptr && src != nullptr && n != 0) {
        std::memcpy(dst, src, n);
    }
}

void galloc_memset(void* dst, unsigned char value, unsigned long n) {
    if (dst != nullptr && n != 0) {
        std::memset(dst, value, n);
    }
}
