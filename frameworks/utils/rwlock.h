// SPDX-License-Identifier: Apache-2.0
// RWLock: a counted wrapper over a POSIX reader-writer lock.
#ifndef KORVANE_FRAMEWORKS_UTILS_RWLOCK_H_
#define KORVANE_FRAMEWORKS_UTILS_RWLOCK_H_

#include <pthread.h>

#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"

class KORVANE_API RWLock : public RefBase {
  public:
    enum { PRIVATE = 0, SHARED = 1 };

    // Default attributes. The name is ignored.
    RWLock();
    explicit RWLock(const char* name);

    // SHARED gives a process-shared lock; any other type one with default attributes.
    RWLock(int type, const char* name);

    ~RWLock() override;

    RWLock(const RWLock&) = delete;
    RWLock& operator=(const RWLock&) = delete;

    // 0, or a negated errno value (the try forms: -EBUSY when the lock is held).
    int readLock();
    int tryReadLock();
    int writeLock();
    int tryWriteLock();

    // Releases either kind of lock. The system's result is ignored.
    void unlock();

  private:
    pthread_rwlock_t mRWLock;
};

#endif  // KORVANE_FRAMEWORKS_UTILS_RWLOCK_H_
