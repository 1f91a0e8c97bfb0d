// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/support/machine.h"

#include <hwy/highway.h>
#include <hwy/targets.h>

#include <cstdint>
#include <fstream>

namespace korvane::bench {
namespace {

#if defined(__clang__)
constexpr char kCompiler[] = "clang " __clang_version__;
#else
constexpr char kCompiler[] = "g++ " __VERSION__;
#endif

std::string processor_name() {
    std::ifstream information("/proc/cpuinfo");
    for (std::string line; std::getline(information, line);) {
        if (line.rfind("model name", 0) == 0) {
            return line.substr(line.find(": ") + 2);
        }
    }
    return "unnamed processor";
}

// Among the compiled sets that the processor has, the best one is the lowest bit.
int64_t chosen_target() {
    const int64_t targets = hwy::SupportedTargets() & HWY_TARGETS;
    return targets & -targets;
}

}  // namespace

std::string machine_line() {
    return processor_name() + "; kernels for " + hwy::TargetName(chosen_target()) + "; " + kCompiler;
}

bool dispatches_to_avx512() {
#if HWY_ARCH_X86
    return chosen_target() < HWY_AVX2;
#else
    return false;
#endif
}

bool dispatch_only_to(const std::string& name) {
    int64_t targets = hwy::SupportedTargets() & HWY_TARGETS;
    while (targets != 0) {
        const int64_t target = targets & -targets;
        if (name == hwy::TargetName(target)) {
            hwy::SetSupportedTargetsForTest(target);
            hwy::GetChosenTarget().Update(target);
            return true;
        }
        targets &= ~target;
    }
    return false;
}

PinnedThread::PinnedThread() {
    CPU_ZERO(&m_Before);
    sched_getaffinity(0, sizeof(m_Before), &m_Before);
    cpu_set_t here;
    CPU_ZERO(&here);
    CPU_SET(static_cast<size_t>(sched_getcpu()), &here);
    sched_setaffinity(0, sizeof(here), &here);
}

PinnedThread::~PinnedThread() {
    sched_setaffinity(0, sizeof(m_Before), &m_Before);
}

}  // namespace korvane::bench
