// SPDX-License-Identifier: Apache-2.0
// Runs a test body once for every vector instruction set that was compiled in and that this processor has.
#ifndef KORVANE_TESTS_SUPPORT_SIMD_TARGETS_H_
#define KORVANE_TESTS_SUPPORT_SIMD_TARGETS_H_

#include <functional>
#include <string>

// `body` gets the name of the target that all kernels dispatch to while it runs. Fails when no vector target is to be
// had, so that a suite that never left the scalar path is not green. Not for several threads at once.
void for_each_simd_target(const std::function<void(const std::string& target)>& body);

#endif  // KORVANE_TESTS_SUPPORT_SIMD_TARGETS_H_
