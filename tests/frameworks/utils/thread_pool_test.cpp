// SPDX-License-Identifier: Apache-2.0
#include "frameworks/utils/thread_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

namespace {

class Task : public IRunnable {
  public:
    Task(std::atomic<int>& deleted, std::function<void()> body) : m_Body(std::move(body)), m_Deleted(deleted) {}
    ~Task() override { ++m_Deleted; }
    void run() override { m_Body(); }

  private:
    std::function<void()> m_Body;
    std::atomic<int>& m_Deleted;
};

void wait_until(const std::function<bool()>& predicate) {
    while (!predicate()) {
        std::this_thread::yield();
    }
}

TEST(ThreadPool, RunsAllTasksInOrderAndKeepsNone) {
    constexpr int kTasks = 50;
    std::vector<int> order, expected;
    std::atomic<int> deleted{0};
    const auto task = [&](int number) {
        return new Task(deleted, [&order, number] {
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
        wait_until([&] { return deleted == kTasks; });
    }
    EXPECT_EQ(order, expected);
    held.clear();
    wait_until([&] { return deleted == kTasks + 1; });
}

TEST(ThreadPool, GoesAtOnceWhileWorkersWaitOrHaveNotBegun) {
    for (const int workers : {-3, 0, 1, 4}) {
        for (int i = 0; i < 25; ++i) {
            std::atomic<int> deleted{0};
            ThreadPool pool(workers);
            pool.start();
            if (i == 0) {
                // Long enough for them to wait for work.
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }
            if (workers > 0 && i % 2 == 0) {
                pool.submit(new Task(deleted, [] {}));
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
    std::atomic<int> deleted{0};
    {
        ThreadPool pool(2);
        pool.start();
        pool.submit(new Task(deleted, [&] {
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
