// Vectors on huge pages, where the system grants them. On small pages the time of a loop that runs at the speed of
// memory depends on where in memory its buffers happen to lie, and that differs from buffer to buffer and from run to
// run.
#ifndef KORVANE_BENCHMARKS_SUPPORT_HUGE_PAGES_H_
#define KORVANE_BENCHMARKS_SUPPORT_HUGE_PAGES_H_

#include <sys/mman.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <vector>

namespace korvane::bench {

template <typename T>
struct HugePageAllocator {
    using value_type = T;

    HugePageAllocator() = default;
    template <typename U>
    HugePageAllocator(const HugePageAllocator<U>&) {}

    T* allocate(size_t count) {
        constexpr size_t kPage = size_t{2} << 20;
        const size_t bytes = (count * sizeof(T) + kPage - 1) / kPage * kPage;
        void* memory = std::aligned_alloc(kPage, bytes);
        if (memory == nullptr) {
            throw std::bad_alloc();
        }
        madvise(memory, bytes, MADV_HUGEPAGE);
        return static_cast<T*>(memory);
    }
    void deallocate(T* memory, size_t) { std::free(memory); }

    bool operator==(const HugePageAllocator&) const = default;
};

template <typename T>
using HugeVector = std::vector<T, HugePageAllocator<T>>;

}  // namespace korvane::bench

#endif  // KORVANE_BENCHMARKS_SUPPORT_HUGE_PAGES_H_
