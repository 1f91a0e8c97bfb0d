// SPDX-License-Identifier: Apache-2.0
#include "tools/bench/job_queue.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace korvane {

JobQueue::JobQueue(size_t capacity) : m_Capacity(capacity), m_Thread([this] { serve(); }) {}

JobQueue::~JobQueue() {
    end();
    m_Thread.join();
}

JobQueue::Outcome JobQueue::run(const std::string& key, std::function<void()> work) {
    std::future<Outcome> outcome;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (m_IsEnding) {
            return Outcome::kEnding;
        }
        const auto older =
            key.empty() ? m_Jobs.end()
                        : std::find_if(m_Jobs.begin(), m_Jobs.end(), [&](const Job& job) { return job.key == key; });
        if (older != m_Jobs.end()) {
            // The newer one takes its place: a page that moves a slider never falls behind the others.
            older->outcome.set_value(Outcome::kReplaced);
            older->work = std::move(work);
            older->outcome = {};
            outcome = older->outcome.get_future();
        } else if (m_Jobs.size() >= m_Capacity) {
            return Outcome::kFull;
        } else {
            m_Jobs.push_back({key, std::move(work), {}});
            outcome = m_Jobs.back().outcome.get_future();
        }
    }
    m_Changed.notify_one();
    return outcome.get();
}

void JobQueue::end() {
    std::deque<Job> dropped;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_IsEnding = true;
        dropped.swap(m_Jobs);
    }
    m_Changed.notify_all();
    for (Job& job : dropped) {
        job.outcome.set_value(Outcome::kEnding);
    }
}

void JobQueue::serve() {
    for (;;) {
        Job job;
        {
            std::unique_lock<std::mutex> lock(m_Mutex);
            m_Changed.wait(lock, [this] { return m_IsEnding || !m_Jobs.empty(); });
            if (m_Jobs.empty()) {
                return;
            }
            job = std::move(m_Jobs.front());
            m_Jobs.pop_front();
        }
        try {
            job.work();
            job.outcome.set_value(Outcome::kDone);
        } catch (...) {
            job.outcome.set_exception(std::current_exception());
        }
    }
}

}  // namespace korvane
