// RWLock: a counted wrapper over a POSIX reader-writer lock.
#ifndef KORVANE_FRAMEWORKS_UTILS_RWLOCK_H_
#define KORVANE_FRAMEWORKS_UTILS_RWLOCK_H_

#include <pthread.h>

#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"

class KORVANE_API RWLock : public RefBase {
  public:
    enum { PRIVATE = 0, SHARED = 1 };

    // Default attributes; names are ignored.
    RWLock();
    explicit RWLock(const char* name);

    // SHARED gives a process-shared lock; any other type one with default attributes.
    RWLock(int type, const char* name);

    ~RWLock() override;

    RWLock(const RWLock&) = delete;
    RWLock& operator=(const RWLock&) = delete;

    // 0, or a negated errno value (the try forms: -EBUSY when the lock is not to be had).
    int readLock();
    int tryReadLock();
    int writeLock();
    int tryWriteLock();

    // Gives back either kind of lock; the result of the system is dropped.
    void unlock();

  private:
    pthread_rwlock_t mRWLock;
};

#endif  // KORVANE_FRAMEWORKS_UTILS_RWLOCK_H_
