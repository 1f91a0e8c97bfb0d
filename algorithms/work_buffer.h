// SPDX-License-Identifier: Apache-2.0
// WorkBuffer<T>: the scratch memory of one call, from the galloc family and given back with the scope.
#ifndef KORVANE_ALGORITHMS_WORK_BUFFER_H_
#define KORVANE_ALGORITHMS_WORK_BUFFER_H_

#include <cstddef>
#include <cstdint>

#include "frameworks/core/memory.h"

namespace korvane {

template <typename T>
class WorkBuffer {
  public:
    // rows x columns elements with undefined content, from a cache line's start; null when that is more than memory.
    WorkBuffer(size_t rows, size_t columns) {
        size_t bytes = 0;
        if (__builtin_mul_overflow(rows, columns, &bytes) || __builtin_mul_overflow(bytes, sizeof(T), &bytes) ||
            __builtin_add_overflow(bytes, kAlignment, &bytes)) {
            return;
        }
        m_Block = galloc_malloc(bytes);
        if (m_Block != nullptr) {
            const auto address = reinterpret_cast<uintptr_t>(m_Block);
            m_Elements = reinterpret_cast<T*>((address + kAlignment - 1) / kAlignment * kAlignment);
        }
    }

    ~WorkBuffer() { galloc_free(m_Block); }

    WorkBuffer(const WorkBuffer&) = delete;
    WorkBuffer& operator=(const WorkBuffer&) = delete;

    T* get() const { return m_Elements; }
    T& operator[](size_t i) const { return m_Elements[i]; }
    explicit operator bool() const { return m_Elements != nullptr; }

  private:
    static constexpr size_t kAlignment = 64;

    void* m_Block = nullptr;
    T* m_Elements = nullptr;
};

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_WORK_BUFFER_H_
