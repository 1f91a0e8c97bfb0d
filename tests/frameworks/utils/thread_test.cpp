// SPDX-License-Identifier: Apache-2.0
#include "frameworks/utils/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include "tests/support/log_capture.h"

namespace {

template <typename Base>
class Counted : public Base {
  public:
    using Base::Base;
    void run() override { ++runs; }
    std::atomic<int> runs{0};
};

using OwnRun = Counted<Thread>;

// join() sets the stop flag, and a thread that has not begun by then runs nothing. So tests wait for the run first.
void wait_for(const std::atomic<int>& runs) {
    while (runs == 0) {
        std::this_thread::yield();
    }
}

TEST(Thread, RunsItsRunnableOrElseItself) {
    auto* counted = new Counted<IRunnable>;
    auto_ptr<IRunnable> runnable(counted);
    OwnRun withRunnable(runnable);
    EXPECT_EQ(withRunnable.start(), 0);
    wait_for(counted->runs);
    EXPECT_EQ(withRunnable.join(), 0);
    EXPECT_EQ(counted->runs, 1);
    EXPECT_EQ(withRunnable.runs, 0);

    OwnRun alone;
    EXPECT_EQ(alone.start(), 0);
    wait_for(alone.runs);
    EXPECT_EQ(alone.join(), 0);
    EXPECT_EQ(alone.runs, 1);
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
    class JoinsItself : public Thread {
      public:
        void run() override {
            int error = ESRCH;
            while (error == ESRCH) {  // until start() is through
                error = join();
            }
            result = error;
        }
        std::atomic<int> result{0};
    };
    JoinsItself thread;
    thread.start();
    wait_for(thread.result);
    EXPECT_EQ(thread.result, EDEADLK);
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

}  // namespace
