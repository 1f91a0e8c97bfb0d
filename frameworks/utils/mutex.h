// SPDX-License-Identifier: Apache-2.0
// Mutex: a counted wrapper over a POSIX mutex.
#ifndef KORVANE_FRAMEWORKS_UTILS_MUTEX_H_
#define KORVANE_FRAMEWORKS_UTILS_MUTEX_H_

#include <pthread.h>

#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"

class Condition;

class KORVANE_API Mutex : public RefBase {
  public:
    enum { PRIVATE = 0, SHARED = 1 };

    // Default attributes. The name is ignored.
    Mutex();
    explicit Mutex(const char* name);

    // SHARED gives a process-shared mutex; any other type one with default attributes.
    Mutex(int type, const char* name);

    ~Mutex() override;

    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    // 0, or a negated errno value (tryLock: -EBUSY when it is held).
    int lock();
    int tryLock();

    // The system's result is ignored.
    void unlock();

  private:
    friend class Condition;

    pthread_mutex_t mMutex;
};

#endif  // KORVANE_FRAMEWORKS_UTILS_MUTEX_H_
