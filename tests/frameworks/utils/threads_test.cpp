// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <functional>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "frameworks/utils/condition.h"
#include "frameworks/utils/mutex.h"
#include "frameworks/utils/rwlock.h"
#include "frameworks/utils/thread.h"
#include "frameworks/utils/thread_pool.h"
#include "tests/frameworks/utils/counted_task.h"
#include "tests/support/log_capture.h"

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
    const auto now_waiting = [&] {
        const std::lock_guard<Mutex> guard(mutex);
        return waiting;
    };
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            const std::lock_guard<Mutex> guard(mutex);
            ++waiting;
            condition.wait(mutex);
            --waiting;
        });
    }
    wait_until([&] { return now_waiting() == 4; });
    condition.signal(Condition::WAKE_UP_ONE);
    wait_until([&] { return now_waiting() < 4; });
    // That no others wake up is no event: they get some time to do so.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_GT(now_waiting(), 1);
    condition.signal(static_cast<Condition::WakeUpType>(5));
    wait_until([&] { return now_waiting() == 0; });
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

class OwnRun : public Thread {
  public:
    using Thread::Thread;
    void run() override { ++runs; }
    std::atomic<int> runs{0};
};

TEST(Thread, RunsItsRunnableOrElseItself) {
    std::atomic<int> runs{0};
    std::atomic<size_t> deleted{0};
    auto_ptr<IRunnable> runnable(new CountedTask(deleted, [&] { ++runs; }));
    OwnRun withRunnable(runnable), alone;
    EXPECT_EQ(withRunnable.start(), 0);
    EXPECT_EQ(alone.start(), 0);
    // join() sets the stop flag, and a thread that has not begun by then runs nothing.
    wait_until([&] { return runs == 1 && alone.runs == 1; });
    EXPECT_EQ(withRunnable.join(), 0);
    EXPECT_EQ(alone.join(), 0);
    EXPECT_EQ(withRunnable.runs, 0);
}

TEST(Thread, NothingToJoinOrToRun) {
    OwnRun thread;
    EXPECT_EQ(thread.join(), ESRCH);
    thread.start();
    EXPECT_EQ(thread.join(), 0);
    EXPECT_EQ(thread.join(), ESRCH);

    EXPECT_EQ(Thread::thread_proc(nullptr), nullptr);
    OwnRun direct;
    EXPECT_EQ(Thread::thread_proc(&direct), nullptr);
    // The run above left the stop flag set, as join() would.
    EXPECT_EQ(Thread::thread_proc(&direct), nullptr);
    EXPECT_EQ(direct.runs, 1);
}

#if !defined(KORVANE_SANITIZED)
// The thread sanitizer gives up on a thread that joins itself.
TEST(Thread, OneThatJoinsItselfIsStillThereForItsOwner) {
    std::atomic<int> result{0};
    std::atomic<size_t> gone{0};
    Thread thread(new CountedTask(gone, [&] {
        while (result == 0) {  // until start() is through
            const int error = thread.join();
            result = error == ESRCH ? 0 : error;
        }
    }));
    thread.start();
    wait_until([&] { return result != 0; });
    EXPECT_EQ(result, EDEADLK);
    EXPECT_EQ(thread.join(), 0);
}

TEST(Thread, FailedStartLogsAndAnswersThePositiveError) {
    // A stack that no address space can hold makes the creation fail; the sanitizers choose stacks of their own.
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_t original;
    pthread_getattr_default_np(&original);
    pthread_attr_setstacksize(&attributes, size_t{1} << 50);
    ASSERT_EQ(pthread_setattr_default_np(&attributes), 0);
    LogCapture log;
    OwnRun thread;
    EXPECT_EQ(thread.start(), EAGAIN);
    pthread_setattr_default_np(&original);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"thread start fail......."});
    EXPECT_EQ(thread.join(), ESRCH);
    pthread_attr_destroy(&attributes);
    pthread_attr_destroy(&original);
}
#endif

TEST(ThreadPool, RunsAllTasksInOrderAndKeepsNone) {
    constexpr int kTasks = 50;
    std::vector<int> order, expected;
    std::atomic<size_t> deleted{0};
    const auto task = [&](int number) {
        return new CountedTask(deleted, [&order, number] {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            order.push_back(number);
        });
    };
    auto_ptr<IRunnable> held(task(-1));
    {
        ThreadPool pool(1);
        pool.submit(static_cast<IRunnable*>(nullptr));
        for (int i = 0; i < kTasks; ++i) {
            if (i == kTasks / 2) {
                pool.start();
            }
            pool.submit(held);
            pool.submit(task(i));
            expected.insert(expected.end(), {-1, i});
        }
        pool.shutdown();
        wait_until([&] { return deleted == size_t{kTasks}; });
    }
    EXPECT_EQ(order, expected);
    held.clear();
    wait_until([&] { return deleted == size_t{kTasks} + 1; });
}

TEST(ThreadPool, GoesAtOnceWhileWorkersWaitOrHaveNotBegun) {
    for (const int workers : {-3, 0, 1, 4}) {
        for (int i = 0; i < 25; ++i) {
            std::atomic<size_t> deleted{0};
            ThreadPool pool(workers);
            pool.start();
            if (i == 0) {
                // Long enough for them to wait for work.
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }
            if (workers > 0 && i % 2 == 0) {
                pool.submit(new CountedTask(deleted, [] {}));
                wait_until([&] { return deleted == 1; });
            }
            if (i % 3 == 0) {
                pool.shutdown();
                pool.shutdown();
            }
        }
    }
}

TEST(ThreadPool, ATaskOutlivesThePoolThatStartedIt) {
    std::atomic<bool> begun{false};
    std::atomic<bool> poolIsGone{false};
    std::atomic<size_t> deleted{0};
    {
        ThreadPool pool(2);
        pool.start();
        pool.submit(new CountedTask(deleted, [&] {
            begun = true;
            wait_until([&] { return poolIsGone.load(); });
        }));
        wait_until([&] { return begun.load(); });
    }
    EXPECT_EQ(deleted, 0);
    poolIsGone = true;
    wait_until([&] { return deleted == 1; });
}

TEST(ThreadWorker, StartsAnewWhileItsEarlierThreadsEnd) {
    class Witness : public ThreadWorker {
      public:
        explicit Witness(std::atomic<bool>* isGone) : ThreadWorker(nullptr), m_IsGone(isGone) {}
        ~Witness() override { *m_IsGone = true; }

      private:
        std::atomic<bool>* m_IsGone;
    };
    std::atomic<bool> isGone{false};
    {
        const auto_ptr<ThreadWorker> worker(new Witness(&isGone));
        for (int i = 0; i < 100; ++i) {
            worker->startWork();
        }
    }
    wait_until([&] { return isGone.load(); });

    // One without a count is joined.
    ThreadWorker uncounted(nullptr);
    uncounted.startWork();
    EXPECT_EQ(uncounted.join(), 0);
}

}  // namespace
