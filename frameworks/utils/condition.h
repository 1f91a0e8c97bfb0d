// SPDX-License-Identifier: Apache-2.0
// Condition: a counted wrapper over a POSIX condition variable. Always used with one Mutex, which the caller holds
// while it waits.
#ifndef KORVANE_FRAMEWORKS_UTILS_CONDITION_H_
#define KORVANE_FRAMEWORKS_UTILS_CONDITION_H_

#include <pthread.h>

#include <cstdint>

#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/utils/mutex.h"
#include "frameworks/utils/timers.h"

// Result of lock, condition and thread calls: 0, or an error number (negated, except for Thread).
using status_t = int32_t;

class KORVANE_API Condition : public RefBase {
  public:
    enum { PRIVATE = 0, SHARED = 1 };
    enum WakeUpType : int { WAKE_UP_ONE = 0, WAKE_UP_ALL = 1 };

    Condition();

    // SHARED gives a process-shared condition; any other type one with default attributes.
    explicit Condition(int type);

    ~Condition() override;

    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    // Waits without a limit; 0 or a negated errno value.
    status_t wait(Mutex& mutex);

    // Returns -ETIMEDOUT at once: `reltime` is given to the system as an absolute deadline, so it lies near the year
    // 1970. This is part of the interface. Threads that wait here poll.
    status_t waitRelative(Mutex& mutex, nsecs_t reltime);

    // Wakes one waiter.
    void signal();

    // WAKE_UP_ONE wakes one waiter, any other value wakes all.
    void signal(WakeUpType type);

    // Wakes all waiters.
    void broadcast();

  private:
    pthread_cond_t mCond;
};

#endif  // KORVANE_FRAMEWORKS_UTILS_CONDITION_H_
