// SPDX-License-Identifier: Apache-2.0
// The loop as one writes it first, one element at a time. Scalar twins look alike, but compilers turn most of them into
// vector or branchless code, which may then run at the speed of memory too.
#ifndef KORVANE_BENCHMARKS_SUPPORT_PLAIN_LOOP_H_
#define KORVANE_BENCHMARKS_SUPPORT_PLAIN_LOOP_H_

#include <cstddef>

namespace korvane::bench {

template <typename Body>
void plain_loop(size_t count, const Body& body) {
#if defined(__clang__)
#pragma clang loop vectorize(disable) interleave(disable) unroll(disable)
#endif
    for (size_t i = 0; i < count; ++i) {
        body(i);
    }
}

}  // namespace korvane::bench

#endif  // KORVANE_BENCHMARKS_SUPPORT_PLAIN_LOOP_H_
