// SPDX-License-Identifier: Apache-2.0
// korvane_bench: ratios of the kernels against peers and floors. README.md in this program's folder says how to read
// it.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <opencv2/core.hpp>
#include <string>

#include "benchmarks/support/machine.h"
#include "benchmarks/support/reporter.h"

namespace {

using korvane::bench::Reporter;

struct Options {
    bool check = false;
    std::string target;
    std::string save;
};

bool starts_with(const char* text, const char* start) {
    return std::strncmp(text, start, std::strlen(start)) == 0;
}

// Takes our own switches out of the list; Google Benchmark reads the rest.
Options take_options(int& count, char** arguments) {
    Options options;
    const auto isOurs = [&options](const char* argument) {
        if (std::strcmp(argument, "--check") == 0) {
            options.check = true;
        } else if (starts_with(argument, "--target=")) {
            options.target = argument + std::strlen("--target=");
        } else if (starts_with(argument, "--save=")) {
            options.save = argument + std::strlen("--save=");
        } else if (starts_with(argument, "--seconds=")) {
            Reporter::limits().seconds = std::atof(argument + std::strlen("--seconds="));
        } else {
            return false;
        }
        return true;
    };
    char** end = std::remove_if(arguments + 1, arguments + count, isOurs);
    count = static_cast<int>(end - arguments);
    return options;
}

}  // namespace

int main(int count, char** arguments) {
    const Options options = take_options(count, arguments);
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) {
        return 2;
    }
    if (!options.target.empty() && !korvane::bench::dispatch_only_to(options.target)) {
        std::fprintf(stderr, "korvane_bench: no instruction set '%s' here\n", options.target.c_str());
        return 2;
    }
    cv::setNumThreads(1);
    // Pictures come fresh from the system, not from what an earlier comparison left, or figures would depend on its
    // place in the run.
    constexpr int kPictureBytes = 4 << 20;
    mallopt(M_MMAP_THRESHOLD, kPictureBytes);
    Reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    if (!options.save.empty() && !reporter.save(options.save)) {
        std::fprintf(stderr, "korvane_bench: cannot write %s\n", options.save.c_str());
        return 2;
    }
    return reporter.failed() != 0 || (options.check && reporter.missed() != 0) ? 1 : 0;
}
