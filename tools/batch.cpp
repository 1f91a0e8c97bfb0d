// SPDX-License-Identifier: Apache-2.0
#include "tools/batch.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tools/batch_plan.h"
#include "tools/command.h"
#include "tools/photo/interrupts.h"
#include "tools/progress.h"
#include "tools/worker_pool.h"

namespace korvane {
namespace {

namespace fs = std::filesystem;

// Makes the folders of a batch. Those that are new go again when the batch turns out to be a wrong call.
class Folders {
  public:
    void make(const fs::path& folder) {
        if (folder.empty() || fs::exists(folder)) {
            return;
        }
        make(folder.parent_path());
        // Where this fails, each photo meets the reason.
        std::error_code ignored;
        if (fs::create_directory(folder, ignored)) {
            m_New.push_back(folder);
        }
    }
    void remove() {
        for (auto folder = m_New.rbegin(); folder != m_New.rend(); ++folder) {
            std::error_code ignored;
            fs::remove(*folder, ignored);
        }
    }

  private:
    std::vector<fs::path> m_New;
};

size_t worker_count(const PhotoOptions& photo, size_t photos) {
    const size_t processors = std::max(1U, std::thread::hardware_concurrency());
    return std::min(photos, photo.jobs > 0 ? static_cast<size_t>(photo.jobs) : processors);
}

// The reason alone, or after the photo's name when it does not begin with what cannot be read or written.
std::string failure_line(const PlannedPhoto& photo, const std::string& reason) {
    const bool isNamed = reason.starts_with("cannot read " + photo.input + ": ") ||
                         (!photo.output.empty() && reason.starts_with("cannot write " + photo.output + ": "));
    return isNamed ? reason : photo.input + ": " + reason;
}

void check_files(const PlannedPhoto& photo, const WriteOptions& options) {
    if (photo.input != "-" && access(photo.input.c_str(), R_OK) != 0) {
        throw CommandError("cannot read " + photo.input + ": " + std::strerror(errno));
    }
    const fs::path folder = fs::path(photo.output).parent_path();
    if (!photo.output.empty() && (folder.empty() || fs::exists(folder))) {
        check_output(photo.output, options);
    }
}

void show(const PlannedPhoto& photo, const WriteOptions& options) {
    check_files(photo, options);
    std::cout << photo.input << (photo.output.empty() ? "" : " -> ") << photo.output << '\n';
}

void show_plan(const std::vector<PlannedPhoto>& plan, const WriteOptions& options) {
    bool anyFailed = false;
    for (const PlannedPhoto& photo : plan) {
        try {
            show(photo, options);
        } catch (const CommandError& error) {
            anyFailed = true;
            print_error(error.what());
        }
    }
    if (anyFailed) {
        throw SomeFailed();
    }
}

void run_plan(const std::vector<PlannedPhoto>& plan, PhotoOptions& photo, const std::function<void()>& work) {
    std::optional<UninterruptedSection> section(std::in_place);
    Folders folders;
    for (const PlannedPhoto& planned : plan) {
        folders.make(fs::path(planned.output).parent_path());
    }
    Progress progress("korvane", plan.size(), photo.isQuiet);
    size_t done = 0;
    bool anyFailed = false;
    std::optional<std::string> wrongUsage;
    Jobs jobs;
    jobs.count = plan.size();
    jobs.workers = worker_count(photo, plan.size());
    jobs.work = [&](size_t index) {
        photo.input = plan[index].input;
        photo.output = plan[index].output;
        work();
    };
    jobs.report = [&](size_t index, const JobResult& result) {
        ++done;
        if (result.status == JobStatus::kWrongUsage) {
            wrongUsage = result.error;
            return false;
        }
        if (result.status == JobStatus::kFailed || !result.output.empty() || !result.warnings.empty()) {
            progress.erase();
        }
        std::cerr << result.warnings << std::flush;
        std::cout << result.output << std::flush;
        if (result.status == JobStatus::kFailed) {
            anyFailed = true;
            print_error(failure_line(plan[index], result.error));
        }
        return true;
    };
    jobs.tick = [&] { progress.show(done); };
    run_in_workers(jobs);
    progress.erase();
    if (wrongUsage) {
        folders.remove();
        throw UsageError(*wrongUsage);
    }
    section.reset();
    if (interrupt_is_pending()) {
        await_interrupt();
    }
    if (anyFailed) {
        throw SomeFailed();
    }
}

}  // namespace

void for_each_photo(PhotoOptions& photo, const std::function<void()>& work) {
    const bool isFolder = photo.output.ends_with('/');
    photo.isBatch = isFolder || photo.inputs.size() > 1;
    if (!photo.isBatch) {
        photo.input = photo.inputs.front();
        if (photo.isDryRun) {
            show({photo.input, photo.output}, photo.write);
        } else {
            work();
        }
        return;
    }
    if (!photo.output.empty() && !isFolder) {
        throw UsageError("several photos need a folder to go to: write -o " + photo.output + "/");
    }
    const std::vector<PlannedPhoto> plan = plan_batch(photo.inputs, photo.output, photo.write.format);
    if (photo.isDryRun) {
        show_plan(plan, photo.write);
    } else {
        run_plan(plan, photo, work);
    }
}

}  // namespace korvane
