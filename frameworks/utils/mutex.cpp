// SPDX-License-Identifier: Apache-2.0
#include "frameworks/utils/mutex.h"

Mutex::Mutex() {
    pthread_mutex_init(&mMutex, nullptr);
}

Mutex::Mutex(const char* /*name*/) : Mutex() {}

Mutex::Mutex(int type, const char* /*name*/) {
    if (type != SHARED) {
        pthread_mutex_init(&mMutex, nullptr);
        return;
    }
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutex_init(&mMutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

Mutex::~Mutex() {
    pthread_mutex_destroy(&mMutex);
}

int Mutex::lock() {
    return -pthread_mutex_lock(&mMutex);
}

int Mutex::tryLock() {
    return -pthread_mutex_trylock(&mMutex);
}

void Mutex::unlock() {
    pthread_mutex_unlock(&mMutex);
}
