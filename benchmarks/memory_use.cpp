// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/memory_use.h"

#include <malloc.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

std::atomic<size_t> gHeapBytes{0};
std::atomic<size_t> gPeakBytes{0};

void* taken(void* block) {
    if (block != nullptr) {
        const size_t now = gHeapBytes.fetch_add(malloc_usable_size(block)) + malloc_usable_size(block);
        size_t peak = gPeakBytes.load();
        while (now > peak && !gPeakBytes.compare_exchange_weak(peak, now)) {
        }
    }
    return block;
}

void given_back(void* block) {
    if (block != nullptr) {
        gHeapBytes.fetch_sub(malloc_usable_size(block));
    }
}

}  // namespace

// The C library's own functions under the names that it keeps for this purpose.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);

void* malloc(size_t size) noexcept {
    return taken(__libc_malloc(size));
}

void* calloc(size_t count, size_t size) noexcept {
    return taken(__libc_calloc(count, size));
}

// While a block moves, both places are taken.
void* realloc(void* block, size_t size) noexcept {
    if (block == nullptr) {
        return malloc(size);
    }
    void* moved = malloc(size);
    if (moved == nullptr) {
        return nullptr;
    }
    std::memcpy(moved, block, std::min(size, malloc_usable_size(block)));
    free(block);
    return moved;
}

void free(void* block) noexcept {
    given_back(block);
    __libc_free(block);
}

void* memalign(size_t alignment, size_t size) noexcept {
    return taken(__libc_memalign(alignment, size));
}

void* aligned_alloc(size_t alignment, size_t size) noexcept {
    return memalign(alignment, size);
}

int posix_memalign(void** block, size_t alignment, size_t size) noexcept {
    *block = memalign(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}
}

namespace korvane::bench {
namespace {

constexpr size_t kPaintedBytes = size_t{1} << 20;
constexpr size_t kStackBytes = 2 * kPaintedBytes;
// Left unpainted for the frame of the function that paints; what needs less than this shows as nothing.
constexpr size_t kOwnBytes = 512;
constexpr uint64_t kPaint = 0xA5A5A5A5A5A5A5A5;

struct Measurement {
    const std::function<void()>& work;
    MemoryUse use = {};
};

// Paints the stack below its own frame and sees how far down it was written. Painting happens here and not before the
// thread starts, so that what starting and ending a thread takes is not seen. Volatile, since to the compiler nobody
// owns this memory.
__attribute__((noinline)) size_t stack_used_by(const std::function<void()>& work) {
    auto* const top = reinterpret_cast<volatile uint64_t*>(
        (reinterpret_cast<uintptr_t>(__builtin_frame_address(0)) - kOwnBytes) & ~uintptr_t{15});
    auto* const bottom = top - kPaintedBytes / sizeof(uint64_t);
    for (auto* place = bottom; place != top; place = place + 1) {
        *place = kPaint;
    }
    work();
    auto* lowest = bottom;
    while (lowest != top && *lowest == kPaint) {
        lowest = lowest + 1;
    }
    return static_cast<size_t>(top - lowest) * sizeof(uint64_t);
}

void* measure(void* argument) {
    auto* measurement = static_cast<Measurement*>(argument);
    const size_t before = gHeapBytes.load();
    gPeakBytes.store(before);
    measurement->use.stackBytes = stack_used_by(measurement->work);
    measurement->use.heapBytes = gPeakBytes.load() - before;
    return nullptr;
}

}  // namespace

MemoryUse memory_use_of(const std::function<void()>& work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, kStackBytes);
    pthread_t thread = {};
    Measurement measurement = {work};
    if (pthread_create(&thread, &attributes, measure, &measurement) != 0) {
        std::fputs("memory: no thread\n", stderr);
        std::exit(1);
    }
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return measurement.use;
}

}  // namespace korvane::bench
