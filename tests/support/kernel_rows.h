// SPDX-License-Identifier: Apache-2.0
// Every function over pixels as a row of a table: calls on a picture whose buffers come from the test that runs them
// and have exactly the bytes that the headers name.
#ifndef KORVANE_TESTS_SUPPORT_KERNEL_ROWS_H_
#define KORVANE_TESTS_SUPPORT_KERNEL_ROWS_H_

#include <cstddef>
#include <cstring>
#include <functional>
#include <span>
#include <type_traits>

class Picture {
  public:
    Picture(int w, int h) : width(w), height(h), pixels(static_cast<size_t>(w) * static_cast<size_t>(h)) {}
    virtual ~Picture() = default;
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    // So many bytes of any content, for a call that may write to them or only reads.
    virtual unsigned char* block(size_t count, bool isWritten) = 0;

    // Of moderate size, one for each byte at the beginning of its place.
    template <typename T>
    T* numbers(size_t count) {
        unsigned char* const bytes = block(count * sizeof(T), true);
        for (unsigned char* byte = bytes; byte < bytes + count * sizeof(T); byte += sizeof(T)) {
            const T value = std::is_floating_point_v<T> ? static_cast<T>(*byte) / 3 : static_cast<T>(*byte);
            std::memcpy(byte, &value, sizeof(T));
        }
        return reinterpret_cast<T*>(bytes);
    }

    const int width;
    const int height;
    const size_t pixels;
};

struct KernelRow {
    const char* name;
    std::function<void(Picture& picture)> call;
};

std::span<const KernelRow> conversion_rows();
std::span<const KernelRow> kernel_rows();
// Slower, or with nothing to do in a small picture.
std::span<const KernelRow> frame_rows();

#endif  // KORVANE_TESTS_SUPPORT_KERNEL_ROWS_H_
