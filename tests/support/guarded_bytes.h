// SPDX-License-Identifier: Apache-2.0
// Bytes at a chosen misalignment between two guard zones, to see on every instruction set what the address sanitizer
// sees on one: a store beside the buffer.
#ifndef KORVANE_TESTS_SUPPORT_GUARDED_BYTES_H_
#define KORVANE_TESTS_SUPPORT_GUARDED_BYTES_H_

#include <algorithm>
#include <cstddef>
#include <vector>

class GuardedBytes {
  public:
    GuardedBytes(const std::vector<unsigned char>& content, size_t misalignment)
        : m_Start(kGuardBytes + misalignment), m_Size(content.size()), m_Bytes(m_Start + m_Size + kGuardBytes, kGuard) {
        std::copy(content.begin(), content.end(), data());
    }

    unsigned char* data() { return m_Bytes.data() + m_Start; }
    std::vector<unsigned char> content() { return {data(), data() + m_Size}; }

    bool intact() const {
        const auto isGuard = [](unsigned char byte) { return byte == kGuard; };
        const auto start = m_Bytes.begin() + static_cast<std::ptrdiff_t>(m_Start);
        return std::all_of(m_Bytes.begin(), start, isGuard) &&
               std::all_of(start + static_cast<std::ptrdiff_t>(m_Size), m_Bytes.end(), isGuard);
    }

  private:
    static constexpr size_t kGuardBytes = 256;
    static constexpr unsigned char kGuard = 0xA5;

    size_t m_Start;
    size_t m_Size;
    std::vector<unsigned char> m_Bytes;
};

#endif  // KORVANE_TESTS_SUPPORT_GUARDED_BYTES_H_
