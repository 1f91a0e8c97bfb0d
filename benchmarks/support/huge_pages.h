// SPDX-License-Identifier: Apache-2.0
// Vectors on huge pages, where the system grants them. On small pages the time of a loop that runs at the speed of
// memory depends on where in memory its buffers happen to lie, and that differs from buffer to buffer and from run to
// run.
#ifndef KORVANE_BENCHMARKS_SUPPORT_HUGE_PAGES_H_
#define KORVANE_BENCHMARKS_SUPPORT_HUGE_PAGES_H_

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace korvane::bench {

template <typename T>
class HugePageAllocator {
  public:
    using value_type = T;

    HugePageAllocator() = default;
    template <typename U>
    HugePageAllocator(const HugePageAllocator<U>&) {}

    T* allocate(size_t count) {
        const size_t bytes = bytes_for(count);
        // Room to begin at a whole huge page; what is too much goes back.
        void* memory = mmap(nullptr, bytes + kPageBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            throw std::bad_alloc();
        }
        char* begin = static_cast<char*>(memory);
        const size_t before = (kPageBytes - reinterpret_cast<uintptr_t>(begin) % kPageBytes) % kPageBytes;
        if (before > 0) {
            munmap(begin, before);
        }
        munmap(begin + before + bytes, kPageBytes - before);
        madvise(begin + before, bytes, MADV_HUGEPAGE);
        return reinterpret_cast<T*>(begin + before);
    }
    void deallocate(T* memory, size_t count) { munmap(memory, bytes_for(count)); }

    bool operator==(const HugePageAllocator&) const = default;

  private:
    static constexpr size_t kPageBytes = size_t{2} << 20;

    static size_t bytes_for(size_t count) { return (count * sizeof(T) + kPageBytes - 1) / kPageBytes * kPageBytes; }
};

template <typename T>
using HugeVector = std::vector<T, HugePageAllocator<T>>;

}  // namespace korvane::bench

#endif  // KORVANE_BENCHMARKS_SUPPORT_HUGE_PAGES_H_
