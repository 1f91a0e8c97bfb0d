// SPDX-License-Identifier: Apache-2.0
#include "frameworks/utils/thread.h"

#include <cerrno>

#include "platform/log.h"

Thread::Thread() = default;

Thread::Thread(IRunnable* runnable) : m_Runnable(runnable) {}

Thread::Thread(auto_ptr<IRunnable>& runnable) : m_Runnable(runnable) {}

Thread::~Thread() = default;

status_t Thread::start() {
    return create(thread_proc);
}

status_t Thread::startCounted() {
    // Atomic, since a thread of an earlier start may be dropping its reference just now. The caller's own reference
    // keeps the count above 0.
    if (__atomic_load_n(&m_Count, __ATOMIC_RELAXED) == 0) {
        return create(thread_proc);
    }
    incStrong();
    const status_t error = create(counted_proc);
    if (error != 0) {
        decStrong();
    }
    return error;
}

void Thread::detach() {
    if (m_IsJoinable.exchange(false, std::memory_order_acquire)) {
        pthread_detach(m_Tid);
    }
}

status_t Thread::create(void* (*entry)(void*)) {
    pthread_t tid{};
    const int error = pthread_create(&tid, nullptr, entry, this);
    if (error != 0) {
        KORVANE_LOGD("thread start fail.......");
        return error;
    }
    // Nobody can join the thread of an earlier start any more; detached, it is freed when it ends.
    detach();
    m_Tid = tid;
    // Whoever sees the flag sees m_Tid, also the new thread.
    m_IsJoinable.store(true, std::memory_order_release);
    // Cleared only now: when an object that was joined is started again, its new thread may look at the flag first, and
    // then ends without running. Callers make a new object for a new run.
    m_IsStop.store(false, std::memory_order_relaxed);
    return 0;
}

void* Thread::thread_proc(void* arg) {
    auto* self = static_cast<Thread*>(arg);
    if (self == nullptr || self->m_IsStop.load(std::memory_order_relaxed)) {
        return nullptr;
    }
    if (self->m_Runnable.get() != nullptr) {
        self->m_Runnable->run();
    } else {
        self->run();
    }
    self->m_IsStop.store(true, std::memory_order_relaxed);
    return nullptr;
}

void* Thread::counted_proc(void* arg) {
    const auto_ptr<Thread> self(static_cast<Thread*>(arg));
    self->decStrong();  // The reference from startCounted(); `self` holds its own by now.
    return thread_proc(arg);
}

void Thread::run() {}

status_t Thread::join() {
    m_IsStop.store(true, std::memory_order_relaxed);
    if (!m_IsJoinable.exchange(false, std::memory_order_acquire)) {
        return ESRCH;
    }
    const int error = pthread_join(m_Tid, nullptr);
    if (error != 0) {
        // A thread that tried to join itself can still be joined by its owner.
        m_IsJoinable.store(true, std::memory_order_release);
    }
    return error;
}

void Thread::sleep(int64_t ns) {
    Condition condition;
    Mutex mutex;
    mutex.lock();
    condition.waitRelative(mutex, ns);
    mutex.unlock();
}
