// SPDX-License-Identifier: Apache-2.0
// Thread: a POSIX thread that runs a counted IRunnable, or its own run().
//
// The system's thread does not own the Thread object. The caller keeps the object until the thread has ended, and joins
// it first: the destructor neither joins nor detaches.
#ifndef KORVANE_FRAMEWORKS_UTILS_THREAD_H_
#define KORVANE_FRAMEWORKS_UTILS_THREAD_H_

#include <pthread.h>

#include <atomic>
#include <cstdint>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/utils/condition.h"

// Something that can be run. The slot order is part of the binary interface.
class KORVANE_API IRunnable : public RefBase {
  public:
    virtual void run() = 0;
};

class KORVANE_API Thread : public RefBase {
  public:
    Thread();

    // Takes one reference on `runnable` (null: the thread's own run() is used).
    explicit Thread(IRunnable* runnable);
    explicit Thread(auto_ptr<IRunnable>& runnable);

    ~Thread() override;

    // Creates the system's thread. 0, or the positive error number of the creation, which is also logged. Of several
    // starts only the last thread can be joined.
    virtual status_t start();

    // What the thread does when it has no runnable. Empty here.
    virtual void run();

    // Sets the stop flag and waits for the thread to end. The system's result, unchanged; ESRCH when there is no
    // thread to join (never started, or joined already).
    virtual status_t join();

    // Yields: the wait under it returns at once whatever `ns` says (see Condition::waitRelative).
    static void sleep(int64_t ns);

    // The entry of the new thread; `arg` is the Thread. Returns null. It runs nothing when the stop flag is set
    // already.
    static void* thread_proc(void* arg);

  protected:
    // start() for counted objects: the thread holds a reference of its own until it ends, so the owners may drop theirs
    // earlier. An object with count 0 (on the stack, embedded) is started as by start(), and its owner must join it.
    KORVANE_HIDDEN status_t startCounted();

    // Lets the system free the thread's resources when it ends, if it was started and not joined. For destructors of
    // classes that use startCounted().
    KORVANE_HIDDEN void detach();

    pthread_t m_Tid{};
    auto_ptr<IRunnable> m_Runnable;
    std::atomic<bool> m_IsStop{false};

  private:
    KORVANE_HIDDEN status_t create(void* (*entry)(void*));
    KORVANE_HIDDEN static void* counted_proc(void* arg);

    // Joining an id that names no thread crashes on some systems, so join() asks here first.
    std::atomic<bool> m_IsJoinable{false};
};

#endif  // KORVANE_FRAMEWORKS_UTILS_THREAD_H_
