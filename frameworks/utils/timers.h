// SPDX-License-Identifier: Apache-2.0
// Time in nanoseconds and the time-out arithmetic on it.
#ifndef KORVANE_FRAMEWORKS_UTILS_TIMERS_H_
#define KORVANE_FRAMEWORKS_UTILS_TIMERS_H_

#include <cstdint>

#include "frameworks/core/export.h"

// A signed count of nanoseconds.
using nsecs_t = int64_t;

// Wall-clock time since the epoch, in steps of a microsecond. `clock` is ignored.
KORVANE_API nsecs_t systemTime(int clock);

// Does nothing. The name is part of the interface.
KORVANE_API void make_timeout(int ms);

// Whole milliseconds from `referenceTime` to `timeoutTime`, rounded up. 0 when that time has passed; -1 (wait for ever)
// when they do not fit an int.
KORVANE_API int toMillisecondTimeoutDelay(nsecs_t referenceTime, nsecs_t timeoutTime);

#endif  // KORVANE_FRAMEWORKS_UTILS_TIMERS_H_
