// SPDX-License-Identifier: Apache-2.0
#include "frameworks/utils/thread_pool.h"

#include <mutex>
#include <new>

#include "frameworks/core/guard.h"
#include "frameworks/utils/guarded_array.h"

// What a pool shares with its workers. It is counted, because it must outlive blocked workers: they would use freed
// memory, and on desktop Linux destroying a condition with waiters never returns.
class ThreadPoolTasks : public RefBase {
  public:
    void submit(const auto_ptr<IRunnable>& task) {
        m_WorkTaskMutex.lock();
        m_WorkTaskQueue.push_back(task);
        m_WorkTaskMutex.unlock();
        m_WorkTaskCondition.signal();
    }

    // Waits for a task while `isRunning`. Null when the worker was stopped and there is none. A stopped worker takes
    // the task that woke it, since each task is signalled only once.
    auto_ptr<IRunnable> take(const std::atomic<bool>& isRunning) {
        auto_ptr<IRunnable> task;
        const std::lock_guard<Mutex> guard(m_WorkTaskMutex);
        while (isRunning.load(std::memory_order_relaxed) && m_WorkTaskQueue.empty()) {
            m_WorkTaskCondition.wait(m_WorkTaskMutex);
        }
        m_WorkTaskQueue.take_front(task);
        return task;
    }

    // Without m_WorkTaskMutex, for the poll of shutdown().
    bool empty() const { return m_WorkTaskQueue.empty(); }

    void clear() { m_WorkTaskQueue.clear(); }

  private:
    GuardedArray<auto_ptr<IRunnable>> m_WorkTaskQueue;
    Condition m_WorkTaskCondition;
    Mutex m_WorkTaskMutex;
};

ThreadWorker::ThreadWorker(ThreadPool* pool) : m_ThreadPool(pool) {
    if (pool != nullptr) {
        m_Tasks = pool->m_Tasks;
    }
}

ThreadWorker::~ThreadWorker() {
    detach();
}

status_t ThreadWorker::start() {
    return startCounted();
}

void ThreadWorker::startWork() {
    m_IsRunning.store(true, std::memory_order_relaxed);
    start();
}

void ThreadWorker::run() {
    if (m_ThreadPool == nullptr || !m_IsRunning.load(std::memory_order_relaxed)) {
        return;
    }
    do {
        auto_ptr<IRunnable> task = m_Tasks->take(m_IsRunning);
        if (task.get() != nullptr) {
            task->run();
        }
    } while (m_IsRunning.load(std::memory_order_relaxed));
}

void ThreadWorker::stopWork() {
    m_IsRunning.store(false, std::memory_order_relaxed);
}

ThreadPool::ThreadPool(int workerNum) : m_WorkerNum(workerNum), m_Tasks(new (std::nothrow) ThreadPoolTasks) {
    if (m_Tasks.get() == nullptr) {
        return;
    }
    // When memory is short, the workers made so far do all the work.
    korvane::guarded([this] {
        for (int i = 0; i < m_WorkerNum; ++i) {
            const auto_ptr<ThreadWorker> worker(new ThreadWorker(this));
            m_WorkerThread.push_back(worker);
        }
    });
    if (m_WorkerNum > 0 && m_WorkerThread.empty()) {
        // What nobody will ever run must not keep shutdown() waiting.
        m_Tasks.clear();
    }
}

ThreadPool::~ThreadPool() {
    shutdown();
}

void ThreadPool::start() {
    for (const auto_ptr<ThreadWorker>& worker : m_WorkerThread) {
        worker->startWork();
    }
}

void ThreadPool::submit(IRunnable* task) {
    auto_ptr<IRunnable> held(task);
    submit(held);
}

void ThreadPool::submit(auto_ptr<IRunnable>& task) {
    if (task.get() != nullptr && m_Tasks.get() != nullptr) {
        m_Tasks->submit(task);
    }
}

void ThreadPool::shutdown() {
    if (m_Tasks.get() == nullptr) {
        return;
    }
    while (!m_Tasks->empty()) {
        Thread::sleep(10);
    }
    for (const auto_ptr<ThreadWorker>& worker : m_WorkerThread) {
        worker->stopWork();
    }
    m_WorkerThread.clear();
    m_Tasks->clear();
}
