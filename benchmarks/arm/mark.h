// SPDX-License-Identifier: Apache-2.0
// How a counted program speaks to the counting plugin: by a system call that does not exist. The kernel refuses it, and
// the plugin sees its number.
#ifndef KORVANE_BENCHMARKS_ARM_MARK_H_
#define KORVANE_BENCHMARKS_ARM_MARK_H_

#include <cstdint>

namespace korvane::arm {

// The one argument is the mark's number: 2n begins run n, 2n + 1 ends it.
inline constexpr int64_t kMarkSystemCall = 0x6B6F72;

}  // namespace korvane::arm

#endif  // KORVANE_BENCHMARKS_ARM_MARK_H_
