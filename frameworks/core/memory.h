// SPDX-License-Identifier: Apache-2.0
// The galloc family: thin wrappers over the C allocator with defined answers for null and zero.
//
// The _leap forms take a source file name and a line, ignore both and do what the plain forms do. Blocks are freed with
// galloc_free. Any thread may call.
#ifndef KORVANE_FRAMEWORKS_CORE_MEMORY_H_
#define KORVANE_FRAMEWORKS_CORE_MEMORY_H_

#include "frameworks/core/export.h"

// `size` bytes with undefined content; null for size 0 or when memory is short.
KORVANE_API void* galloc_malloc(unsigned long size);
KORVANE_API void* galloc_malloc_leap(unsigned long size, const char* file, unsigned int line);

// `size` zeroed bytes; null for size 0 or when memory is short.
KORVANE_API void* galloc_alloc(unsigned long size);
KORVANE_API void* galloc_alloc_leap(unsigned long size, const char* file, unsigned int line);

// Resizes a block. With a null `ptr` or size 0 it returns null and does nothing: it neither allocates nor frees.
KORVANE_API void* galloc_realloc(void* ptr, unsigned long size);
KORVANE_API void* galloc_realloc_leap(void* ptr, unsigned long size, const char* file, unsigned int line);

// Null is ignored.
KORVANE_API void galloc_free(void* ptr);
KORVANE_API void galloc_free_leap(void* ptr);

// Copies `n` bytes unless a pointer is null or `n` is 0. The blocks must not overlap.
KORVANE_API void galloc_memcpy(void* dst, const void* src, unsigned long n);

// Fills `n` bytes with `value` unless `dst` is null or `n` is 0.
KORVANE_API void galloc_memset(void* dst, unsigned char value, unsigned long n);

#endif  // KORVANE_FRAMEWORKS_CORE_MEMORY_H_
