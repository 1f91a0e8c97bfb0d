// Thread: a POSIX thread that runs a counted IRunnable, or its own run().
//
// The thread does not own its object: the caller keeps the Thread alive while it runs, and joins it before it lets it
// go. The destructor neither joins nor detaches.
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

    // Creates the system's thread. 0, or the positive error number of the creation, which is also logged.
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
    // start() for a counted object whose owners may let it go while its thread still runs: the thread holds a reference
    // of its own until it has ended. An object that nobody counts (on the stack, embedded) is started as by start(),
    // and its owner has to join it.
    KORVANE_HIDDEN status_t startCounted();

    // Gives the thread's resources back to the system when it ends, if it was started and not joined; for destructors
    // of classes that use startCounted().
    KORVANE_HIDDEN void detach();

    pthread_t m_Tid{};
    auto_ptr<IRunnable> m_Runnable;
    std::atomic<bool> m_IsStop{false};

  private:
    KORVANE_HIDDEN status_t create(void* (*entry)(void*));
    KORVANE_HIDDEN static void* counted_proc(void* arg);

    // Joining an id that is not (or no longer) a thread crashes on some systems, so join() asks here first.
    std::atomic<bool> m_IsJoinable{false};
};

#endif  // KORVANE_FRAMEWORKS_UTILS_THREAD_H_
