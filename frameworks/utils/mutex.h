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

    // Default attributes. Names are for the reader of the calling code; they are ignored.
    Mutex();
    explicit Mutex(const char* name);

    // SHARED gives a process-shared mutex; any other type one with default attributes.
    Mutex(int type, const char* name);

    ~Mutex() override;

    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    // 0, or a negated errno value (tryLock: -EBUSY when somebody holds it).
    int lock();
    int tryLock();

    // The result of the system is dropped.
    void unlock();

  private:
    friend class Condition;

    pthread_mutex_t mMutex;
};

#endif  // KORVANE_FRAMEWORKS_UTILS_MUTEX_H_
