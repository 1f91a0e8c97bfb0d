// SPDX-License-Identifier: Apache-2.0
#include "frameworks/utils/condition.h"

#include <ctime>

Condition::Condition() {
    pthread_cond_init(&mCond, nullptr);
}

Condition::Condition(int type) {
    if (type != SHARED) {
        pthread_cond_init(&mCond, nullptr);
        return;
    }
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_cond_init(&mCond, &attributes);
    pthread_condattr_destroy(&attributes);
}

Condition::~Condition() {
    pthread_cond_destroy(&mCond);
}

status_t Condition::wait(Mutex& mutex) {
    return -pthread_cond_wait(&mCond, &mutex.mMutex);
}

status_t Condition::waitRelative(Mutex& mutex, nsecs_t reltime) {
    constexpr nsecs_t kNanosecondsPerSecond = 1'000'000'000;
    // On purpose not added to the current time: the workers' polling and Thread::sleep rely on the immediate return.
    timespec deadline{};
    deadline.tv_sec = static_cast<time_t>(reltime / kNanosecondsPerSecond);
    deadline.tv_nsec = static_cast<long>(reltime % kNanosecondsPerSecond);
    return -pthread_cond_timedwait(&mCond, &mutex.mMutex, &deadline);
}

void Condition::signal() {
    pthread_cond_signal(&mCond);
}

void Condition::signal(WakeUpType type) {
    if (type == WAKE_UP_ONE) {
        signal();
    } else {
        broadcast();
    }
}

void Condition::broadcast() {
    pthread_cond_broadcast(&mCond);
}
