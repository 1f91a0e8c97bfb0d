// SPDX-License-Identifier: Apache-2.0
// What the figures were measured on.
#ifndef KORVANE_BENCHMARKS_SUPPORT_MACHINE_H_
#define KORVANE_BENCHMARKS_SUPPORT_MACHINE_H_

#include <sched.h>

#include <string>

namespace korvane::bench {

// "AMD EPYC; kernels for AVX3; clang 14.0.6": processor, the instruction set that the kernels dispatch to, compiler.
std::string machine_line();

bool dispatches_to_avx512();

// Makes all kernels dispatch to one instruction set, by the name that the machine line shows. False when this processor
// or this build does not have it.
bool dispatch_only_to(const std::string& target);

// Keeps the calling thread on the core where it is, until destroyed.
class PinnedThread {
  public:
    PinnedThread();
    ~PinnedThread();
    PinnedThread(const PinnedThread&) = delete;
    PinnedThread& operator=(const PinnedThread&) = delete;

  private:
    cpu_set_t m_Before;
};

}  // namespace korvane::bench

#endif  // KORVANE_BENCHMARKS_SUPPORT_MACHINE_H_
