// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <iterator>
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

TEST(Mutex, ExcludesAndAnswersNegatedErrors) {
    Mutex plain;
    Mutex shared(Mutex::SHARED, "shared");
    Mutex named("named");
    for (Mutex* mutex : {&plain, &shared, &named}) {
        EXPECT_EQ(mutex->lock(), 0);
        std::thread([&] { EXPECT_EQ(mutex->tryLock(), -EBUSY); }).join();
        mutex->unlock();
        EXPECT_EQ(mutex->tryLock(), 0);
        std::thread([&] { EXPECT_EQ(mutex->tryLock(), -EBUSY); }).join();
        mutex->unlock();
    }
}

TEST(RWLock, ManyReadersOrOneWriter) {
    RWLock plain;
    RWLock shared(RWLock::SHARED, nullptr);
    RWLock named("named");
    for (RWLock* lock : {&plain, &shared, &named}) {
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

// Threads that wait once, and count themselves before and after.
class Waiters {
  public:
    explicit Waiters(int count) {
        for (int i = 0; i < count; ++i) {
            m_Threads.emplace_back([this] {
                m_Mutex.lock();
                ++m_Waiting;
                condition.wait(m_Mutex);
                --m_Waiting;
                m_Mutex.unlock();
            });
        }
        wait_for([&](int waiting) { return waiting == count; });
    }
    ~Waiters() {
        for (std::thread& thread : m_Threads) {
            thread.join();
        }
    }

    int waiting() {
        const std::lock_guard<Mutex> guard(m_Mutex);
        return m_Waiting;
    }

    template <typename Predicate>
    void wait_for(Predicate predicate) {
        while (!predicate(waiting())) {
            std::this_thread::yield();
        }
    }

    Condition condition;

  private:
    Mutex m_Mutex;
    int m_Waiting = 0;
    std::vector<std::thread> m_Threads;
};

TEST(Condition, SignalWakesOneAndEveryOtherTypeWakesAll) {
    Waiters waiters(4);
    waiters.condition.signal(Condition::WAKE_UP_ONE);
    waiters.wait_for([](int waiting) { return waiting < 4; });
    waiters.condition.signal();
    waiters.wait_for([](int waiting) { return waiting < 3; });
    // That no others wake up is no event: they get some time to do so.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_GT(waiters.waiting(), 0);
    waiters.condition.signal(static_cast<Condition::WakeUpType>(5));

    Waiters others(2);
    others.condition.broadcast();
}

#if !defined(KORVANE_SANITIZED)
// Whether the child waits in the system.
bool sleeps(pid_t child) {
    std::ifstream file("/proc/" + std::to_string(child) + "/stat");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    return text.find(") S ") != std::string::npos;
}

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
    while (!sleeps(child)) {
        std::this_thread::yield();
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
