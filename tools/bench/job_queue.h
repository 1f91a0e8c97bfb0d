// SPDX-License-Identifier: Apache-2.0
// Work for one thread: the one that owns the graphics context.
//
// The queue is bounded, so that a flood of requests gets a refusal at once in place of an answer that nobody waits for
// any more. Of one page only the newest job waits: an older one that has not begun is dropped.
#ifndef KORVANE_TOOLS_BENCH_JOB_QUEUE_H_
#define KORVANE_TOOLS_BENCH_JOB_QUEUE_H_

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>

namespace korvane {

class JobQueue {
  public:
    enum class Outcome { kDone, kReplaced, kFull, kEnding };

    explicit JobQueue(size_t capacity);
    // Nobody may be waiting in run() any more.
    ~JobQueue();
    JobQueue(const JobQueue&) = delete;
    JobQueue& operator=(const JobQueue&) = delete;

    // Waits until the job is done or dropped. A job's exception comes out here. An empty key replaces nothing. At the
    // end, jobs that must be done still are.
    Outcome run(const std::string& key, bool mustBeDone, std::function<void()> work);

    // Drops what waits and what comes, but for jobs that must be done.
    void end();

  private:
    struct Job {
        std::string key;
        bool mustBeDone = false;
        std::function<void()> work;
        std::promise<Outcome> outcome;
    };

    void serve();

    const size_t m_Capacity;
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::deque<Job> m_Jobs;
    bool m_IsEnding = false;
    bool m_IsOver = false;
    std::thread m_Thread;
};

}  // namespace korvane

#endif  // KORVANE_TOOLS_BENCH_JOB_QUEUE_H_
