// SPDX-License-Identifier: Apache-2.0
#include "tools/bench/job_queue.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

namespace korvane {

JobQueue::JobQueue(size_t capacity) : m_Capacity(capacity), m_Thread([this] { serve(); }) {}

JobQueue::~JobQueue() {
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_IsOver = true;
    }
    m_Changed.notify_all();
    m_Thread.join();
}

JobQueue::Outcome JobQueue::run(const std::string& key, bool mustBeDone, std::function<void()> work) {
    std::future<Outcome> outcome;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (m_IsEnding && !mustBeDone) {
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
            m_Jobs.push_back({key, mustBeDone, std::move(work), {}});
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
        const auto kept =
            std::stable_partition(m_Jobs.begin(), m_Jobs.end(), [](const Job& job) { return job.mustBeDone; });
        std::move(kept, m_Jobs.end(), std::back_inserter(dropped));
        m_Jobs.erase(kept, m_Jobs.end());
    }
    for (Job& job : dropped) {
        job.outcome.set_value(Outcome::kEnding);
    }
}

void JobQueue::serve() {
    for (;;) {
        Job job;
        {
            std::unique_lock<std::mutex> lock(m_Mutex);
            m_Changed.wait(lock, [this] { return m_IsOver || !m_Jobs.empty(); });
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
