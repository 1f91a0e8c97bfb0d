// SPDX-License-Identifier: Apache-2.0
#include "tests/shortage/failing_allocator.h"

#include <dlfcn.h>
#include <execinfo.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <mutex>
#include <new>

extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);
void __real_free(void* block);
// The first byte of the program and the end of its code, from the linker.
extern const char __executable_start;
extern const char etext;
}

namespace {

constexpr size_t kMostBlocks = 4096;

std::atomic<bool> gIsArmed{false};
std::atomic<bool> gHasFailed{false};
std::atomic<size_t> gCount{0};
std::atomic<size_t> gFailing{0};
std::mutex gMutex;
void* gBlocks[kMostBlocks];
size_t gBlockCount = 0;

bool is_of_program(const void* address) {
    return address >= &__executable_start && address < &etext;
}

bool is_of_standard_library(const void* address) {
    Dl_info info = {};
    return dladdr(address, &info) != 0 && info.dli_fname != nullptr &&
           std::strstr(info.dli_fname, "libstdc++") != nullptr;
}

// Whether the library asked: itself, or by a call into the standard library. The standard library's frames stand
// between this file's and the caller's.
bool is_asked_by_library(const void* caller) {
    if (is_of_program(caller)) {
        return true;
    }
    if (!is_of_standard_library(caller)) {
        return false;
    }
    void* frames[24];
    void** const end = frames + std::max(backtrace(frames, static_cast<int>(std::size(frames))), 0);
    void** frame = std::find_if(frames, end, is_of_standard_library);
    frame = std::find_if_not(frame, end, is_of_standard_library);
    return frame != end && is_of_program(*frame);
}

// True for the one allocation that has to fail.
bool must_fail(const void* caller) {
    if (!gIsArmed || !is_asked_by_library(caller) || ++gCount != gFailing) {
        return false;
    }
    gHasFailed = true;
    errno = ENOMEM;
    return true;
}

void* record(void* block, const void* caller) {
    if (block != nullptr && gIsArmed && is_asked_by_library(caller)) {
        const std::lock_guard<std::mutex> guard(gMutex);
        if (gBlockCount < kMostBlocks) {
            gBlocks[gBlockCount++] = block;
        }
    }
    return block;
}

void forget(const void* block) {
    const std::lock_guard<std::mutex> guard(gMutex);
    void** const end = gBlocks + gBlockCount;
    void** const found = std::find(gBlocks, end, block);
    if (found != end) {
        *found = gBlocks[--gBlockCount];
    }
}

void* allocate(size_t size, const void* caller) {
    return must_fail(caller) ? nullptr : record(__real_malloc(size == 0 ? 1 : size), caller);
}

void* allocate_or_throw(size_t size, const void* caller) {
    void* block = allocate(size, caller);
    return block != nullptr ? block : throw std::bad_alloc();
}

void release(void* block) {
    if (block != nullptr) {
        forget(block);
        __real_free(block);
    }
}

}  // namespace

Shortage::Shortage(size_t failing) {
    // The first backtrace of a process takes memory.
    void* frame = nullptr;
    backtrace(&frame, 1);
    gCount = 0;
    gHasFailed = false;
    gFailing = failing;
    keep_live_blocks();
}

Shortage::Armed::Armed() {
    gIsArmed = true;
}

Shortage::Armed::~Armed() {
    gIsArmed = false;
}

bool Shortage::has_failed() {
    return gHasFailed;
}

size_t Shortage::live_blocks() {
    const std::lock_guard<std::mutex> guard(gMutex);
    return gBlockCount;
}

void Shortage::keep_live_blocks() {
    const std::lock_guard<std::mutex> guard(gMutex);
    gBlockCount = 0;
}

#define KORVANE_CALLER __builtin_return_address(0)

extern "C" {

void* __wrap_malloc(size_t size) {
    return must_fail(KORVANE_CALLER) ? nullptr : record(__real_malloc(size), KORVANE_CALLER);
}

void* __wrap_calloc(size_t count, size_t size) {
    return must_fail(KORVANE_CALLER) ? nullptr : record(__real_calloc(count, size), KORVANE_CALLER);
}

void* __wrap_realloc(void* block, size_t size) {
    if (must_fail(KORVANE_CALLER)) {
        return nullptr;
    }
    forget(block);
    return record(__real_realloc(block, size), KORVANE_CALLER);
}

void __wrap_free(void* block) {
    release(block);
}

}  // extern "C"

// Those of one object and those of several.
#define KORVANE_OPERATORS(several)                                            \
    void* operator new several(size_t size) {                                 \
        return allocate_or_throw(size, KORVANE_CALLER);                       \
    }                                                                         \
    void* operator new several(size_t size, const std::nothrow_t&) noexcept { \
        return allocate(size, KORVANE_CALLER);                                \
    }                                                                         \
    void operator delete several(void* block) noexcept {                      \
        release(block);                                                       \
    }                                                                         \
    void operator delete several(void* block, size_t) noexcept {              \
        release(block);                                                       \
    }

KORVANE_OPERATORS()
KORVANE_OPERATORS([])
