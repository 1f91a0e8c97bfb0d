// SPDX-License-Identifier: Apache-2.0
// ThreadPool: a fixed number of worker threads that run tasks from one first-in, first-out queue.
//
// Workers are made stopped and started together. Shutting down waits until the queue is empty and then drops the
// workers without joining them. A task that is running goes on. A worker that waits for a task stays blocked as long as
// the process lives. What it uses (queue, lock, condition, its own object) is counted and outlives the pool, so
// destroying the pool returns at once.
//
// Any thread may submit; start, shutdown and destruction belong to the pool's owner.
#ifndef KORVANE_FRAMEWORKS_UTILS_THREAD_POOL_H_
#define KORVANE_FRAMEWORKS_UTILS_THREAD_POOL_H_

#include <atomic>
#include <vector>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/utils/thread.h"

class ThreadPool;
class ThreadPoolTasks;

// One thread of a pool. Hold it through auto_ptr; an object with count 0 must be joined before it is destroyed.
class KORVANE_API ThreadWorker : public Thread {
  public:
    // `pool` is not counted; with null the worker's run() does nothing. The pool may go before the worker does.
    explicit ThreadWorker(ThreadPool* pool);
    ~ThreadWorker() override;

    ThreadWorker(const ThreadWorker&) = delete;
    ThreadWorker& operator=(const ThreadWorker&) = delete;

    status_t start() override;

    // Marks the worker running and starts its thread.
    void startWork();

    // Takes tasks, oldest first, and runs each outside the lock, until stopped.
    void run() override;

    // Marks the worker stopped. It is not woken: a blocked worker stays blocked until a task comes, which it still
    // runs.
    void stopWork();

  private:
    std::atomic<bool> m_IsRunning{false};
    ThreadPool* m_ThreadPool;
    auto_ptr<ThreadPoolTasks> m_Tasks;
};

class KORVANE_API ThreadPool : public RefBase {
  public:
    // Makes `workerNum` stopped workers, none when it is below 1; as many as it can when memory is short. Without
    // memory for the queue or for a single worker the pool ignores what is submitted.
    explicit ThreadPool(int workerNum);

    // Calls shutdown(), so it never returns when tasks are queued that no worker will take.
    ~ThreadPool() override;

    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    // Starts all workers. One whose thread cannot be made only logs.
    void start();

    // Queues a task and wakes one worker. The queue takes a reference, so a new task given by raw pointer is owned by
    // the pool and deleted after it has run. Null is ignored. Tasks may be submitted before start(). When memory is
    // short the task is let go without having run.
    void submit(IRunnable* task);
    void submit(auto_ptr<IRunnable>& task);

    // Waits in a busy loop until the queue is empty, then stops and drops all workers. Never returns when tasks are
    // queued and the pool was never started.
    void shutdown();

  private:
    friend class ThreadWorker;

    int m_WorkerNum;
    std::vector<auto_ptr<ThreadWorker>> m_WorkerThread;
    auto_ptr<ThreadPoolTasks> m_Tasks;
};

#endif  // KORVANE_FRAMEWORKS_UTILS_THREAD_POOL_H_
