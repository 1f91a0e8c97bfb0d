// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "frameworks/utils/condition.h"
#include "frameworks/utils/mutex.h"
#include "frameworks/utils/rwlock.h"
#include "frameworks/utils/thread.h"

namespace {

TEST(Locks, ExcludeAndAnswerNegatedErrors) {
    Mutex plain, shared(Mutex::SHARED, "shared"), named("named");
    for (Mutex* mutex : {&plain, &shared, &named}) {
        for (const auto take : {&Mutex::lock, &Mutex::tryLock}) {
            EXPECT_EQ((mutex->*take)(), 0);
            std::thread([&] { EXPECT_EQ(mutex->tryLock(), -EBUSY); }).join();
            mutex->unlock();
        }
    }
    RWLock plainLock, sharedLock(RWLock::SHARED, nullptr), namedLock("named");
    for (RWLock* lock : {&plainLock, &sharedLock, &namedLock}) {
        EXPECT_EQ(lock->readLock(), 0);
        std::thread([&] {
            EXPECT_EQ(lock->tryReadLock(), 0);
            lock->unlock();
            EXPECT_EQ(lock->tryWriteLock(), -EBUSY);
        }).join();
        lock->unlock();
        EXPECT_EQ(lock->writeLock(), 0);
        std::thread([&] { EXPECT_EQ(lock->tryReadLock(), -EBUSY); }).join();
        lock->unlock();
    }
}

TEST(Condition, RelativeWaitTimesOutAtOnce) {
    Condition condition(Condition::SHARED);
    Mutex mutex;
    const auto start = std::chrono::steady_clock::now();
    mutex.lock();
    EXPECT_EQ(condition.waitRelative(mutex, 1'500'000'000), -ETIMEDOUT);
    EXPECT_EQ(condition.waitRelative(mutex, 0), -ETIMEDOUT);
    mutex.unlock();
    Thread::sleep(3'000'000'000);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST(Condition, SignalWakesOneAndEveryOtherTypeWakesAll) {
    Condition condition;
    Mutex mutex;
    int waiting = 0;
    std::vector<std::jthread> threads;
    const auto start_waiting = [&] {
        threads.emplace_back([&] {
            const std::lock_guard<Mutex> guard(mutex);
            ++waiting;
            condition.wait(mutex);
            --waiting;
        });
    };
    const auto now_waiting = [&] {
        const std::lock_guard<Mutex> guard(mutex);
        return waiting;
    };
    const auto wait_for = [&](int least, int most) {
        while (now_waiting() < least || now_waiting() > most) {
            std::this_thread::yield();
        }
    };
    for (int i = 0; i < 4; ++i) {
        start_waiting();
    }
    wait_for(4, 4);
    condition.signal(Condition::WAKE_UP_ONE);
    wait_for(0, 3);
    condition.signal();
    wait_for(0, 2);
    // That no others wake up is no event: they get some time to do so.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_GT(now_waiting(), 0);
    condition.signal(static_cast<Condition::WakeUpType>(5));
    wait_for(0, 0);
    start_waiting();
    start_waiting();
    wait_for(2, 2);
    condition.broadcast();
}

#if !defined(KORVANE_SANITIZED)
// The thread sanitizer sees what one process does.
TEST(Locks, SharedOnesSpanProcesses) {
    struct Locks {
        Mutex mutex{Mutex::SHARED, "mutex"};
        Condition condition{Condition::SHARED};
        RWLock rwLock{RWLock::SHARED, "lock"};
        bool isOver = false;
    };
    void* memory = mmap(nullptr, sizeof(Locks), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    auto* locks = new (memory) Locks;
    locks->mutex.lock();
    locks->rwLock.writeLock();
    const pid_t child = fork();
    alarm(20);  // Locks of one process leave both waiting for ever.
    if (child == 0) {
        locks->rwLock.readLock();
        locks->mutex.lock();
        locks->isOver = true;
        locks->condition.signal();
        locks->mutex.unlock();
        _exit(0);
    }
    for (std::string state; state != "S";) {  // until the child waits in the system
        std::ifstream("/proc/" + std::to_string(child) + "/stat") >> state >> state >> state;
    }
    locks->rwLock.unlock();
    while (!locks->isOver) {
        locks->condition.wait(locks->mutex);
    }
    locks->mutex.unlock();
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    alarm(0);
    munmap(memory, sizeof(Locks));
}
#endif

}  // namespace
