// SPDX-License-Identifier: Apache-2.0
// What a piece of work takes of the heap and of its thread's stack.
#ifndef KORVANE_BENCHMARKS_MEMORY_USE_H_
#define KORVANE_BENCHMARKS_MEMORY_USE_H_

#include <cstddef>
#include <functional>

namespace korvane::bench {

struct MemoryUse {
    size_t heapBytes;   // the most that was taken at any one time beyond what was there before, on all threads
    size_t stackBytes;  // the deepest that the calling thread's stack was written
};

// Runs `work` on a thread of its own, whose stack is painted before and looked at afterwards. The program's allocator
// is replaced by one that counts.
MemoryUse memory_use_of(const std::function<void()>& work);

}  // namespace korvane::bench

#endif  // KORVANE_BENCHMARKS_MEMORY_USE_H_
