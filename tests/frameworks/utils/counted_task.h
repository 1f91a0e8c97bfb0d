// SPDX-License-Identifier: Apache-2.0
// A task for threads that says when it is gone.
#ifndef KORVANE_TESTS_FRAMEWORKS_UTILS_COUNTED_TASK_H_
#define KORVANE_TESTS_FRAMEWORKS_UTILS_COUNTED_TASK_H_

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "frameworks/utils/thread.h"

class CountedTask : public IRunnable {
  public:
    CountedTask(std::atomic<size_t>& gone, std::function<void()> body) : m_Body(std::move(body)), m_Gone(gone) {}
    ~CountedTask() override { ++m_Gone; }
    void run() override { m_Body(); }

  private:
    std::function<void()> m_Body;
    std::atomic<size_t>& m_Gone;
};

inline void wait_until(const std::function<bool()>& predicate) {
    while (!predicate()) {
        std::this_thread::yield();
    }
}

#endif  // KORVANE_TESTS_FRAMEWORKS_UTILS_COUNTED_TASK_H_
