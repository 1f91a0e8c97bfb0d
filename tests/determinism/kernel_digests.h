// SPDX-License-Identifier: Apache-2.0
// One number for the bytes that each kernel makes of fixed input.
#ifndef KORVANE_TESTS_DETERMINISM_KERNEL_DIGESTS_H_
#define KORVANE_TESTS_DETERMINISM_KERNEL_DIGESTS_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// 64-bit FNV-1a.
uint64_t digest(const std::vector<unsigned char>& bytes);

// By the kernel's name and variant.
using Digests = std::map<std::string, uint64_t>;
Digests kernel_digests(int width, int height);

#endif  // KORVANE_TESTS_DETERMINISM_KERNEL_DIGESTS_H_
