// SPDX-License-Identifier: Apache-2.0
// Jobs done side by side in worker processes.
//
// Processes and not threads: a file that crashes its decoder, or fills the memory, ends one worker and fails one job,
// and the others go on. Each worker also has a GL context of its own for all its jobs, as the filters need. Workers are
// forked without exec, so a job is a plain function; they start before anything was decoded or drawn, and the parent
// itself does neither.
#ifndef KORVANE_TOOLS_WORKER_POOL_H_
#define KORVANE_TOOLS_WORKER_POOL_H_

#include <cstddef>
#include <functional>
#include <string>

namespace korvane {

enum class JobStatus {
    kDone,
    kFailed,      // with the reason in `error`
    kWrongUsage,  // an argument is wrong for all jobs
};

struct JobResult {
    JobStatus status = JobStatus::kFailed;
    std::string error;
    // What the job said on standard output and standard error.
    std::string output;
    std::string warnings;
};

struct Jobs {
    size_t count = 0;
    // How many at a time; memory grows with it and with nothing else.
    size_t workers = 1;
    // In a worker: throws UsageError or another exception to fail.
    std::function<void(size_t index)> work;
    // In the calling process, as jobs end. False gives up what has not begun.
    std::function<bool(size_t index, const JobResult& result)> report;
    // In the calling process, a few times a second.
    std::function<void()> tick;
};

// Returns when all workers have ended. After an interrupt it has ended them between two files, and returns early.
// Throws CommandError when not even one worker can be started.
void run_in_workers(const Jobs& jobs);

}  // namespace korvane

#endif  // KORVANE_TOOLS_WORKER_POOL_H_
