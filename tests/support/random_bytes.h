// SPDX-License-Identifier: Apache-2.0
// Test bytes that are the same on every machine and in every run.
#ifndef KORVANE_TESTS_SUPPORT_RANDOM_BYTES_H_
#define KORVANE_TESTS_SUPPORT_RANDOM_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

inline std::vector<unsigned char> random_bytes(size_t count, uint32_t seed) {
    std::mt19937 generator(seed);
    std::vector<unsigned char> bytes(count);
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(generator() >> 24);
    }
    return bytes;
}

#endif  // KORVANE_TESTS_SUPPORT_RANDOM_BYTES_H_
