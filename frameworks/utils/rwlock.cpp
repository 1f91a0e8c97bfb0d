// SPDX-License-Identifier: Apache-2.0
#include "frameworks/utils/rwlock.h"

RWLock::RWLock() {
    pthread_rwlock_init(&mRWLock, nullptr);
}

RWLock::RWLock(const char* /*name*/) : RWLock() {}

RWLock::RWLock(int type, const char* /*name*/) {
    if (type != SHARED) {
        pthread_rwlock_init(&mRWLock, nullptr);
        return;
    }
    pthread_rwlockattr_t attributes;
    pthread_rwlockattr_init(&attributes);
    pthread_rwlockattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_rwlock_init(&mRWLock, &attributes);
    pthread_rwlockattr_destroy(&attributes);
}

RWLock::~RWLock() {
    pthread_rwlock_destroy(&mRWLock);
}

int RWLock::readLock() {
    return -pthread_rwlock_rdlock(&mRWLock);
}

int RWLock::tryReadLock() {
    return -pthread_rwlock_tryrdlock(&mRWLock);
}

int RWLock::writeLock() {
    return -pthread_rwlock_wrlock(&mRWLock);
}

int RWLock::tryWriteLock() {
    return -pthread_rwlock_trywrlock(&mRWLock);
}

void RWLock::unlock() {
    pthread_rwlock_unlock(&mRWLock);
}
