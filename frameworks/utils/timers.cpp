// SPDX-License-Identifier: Apache-2.0
#include "frameworks/utils/timers.h"

#include <sys/time.h>

namespace {
constexpr uint64_t kNanosecondsPerMillisecond = 1'000'000;
constexpr uint64_t kLongestDelayNanoseconds = 2'147'483'646ULL * kNanosecondsPerMillisecond;
}  // namespace

nsecs_t systemTime(int /*clock*/) {
    timeval now{};
    gettimeofday(&now, nullptr);
    return static_cast<nsecs_t>(now.tv_sec) * 1'000'000'000 + static_cast<nsecs_t>(now.tv_usec) * 1000;
}

void make_timeout(int /*ms*/) {}

int toMillisecondTimeoutDelay(nsecs_t referenceTime, nsecs_t timeoutTime) {
    if (timeoutTime <= referenceTime) {
        return 0;
    }
    // Unsigned, because the distance between two far apart signed times can leave the signed range.
    const uint64_t delta = static_cast<uint64_t>(timeoutTime) - static_cast<uint64_t>(referenceTime);
    if (delta > kLongestDelayNanoseconds) {
        return -1;
    }
    return static_cast<int>((delta + kNanosecondsPerMillisecond - 1) / kNanosecondsPerMillisecond);
}
