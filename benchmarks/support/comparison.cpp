// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/support/comparison.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <ctime>
#include <memory>
#include <numeric>
#include <utility>

#include "benchmarks/support/machine.h"
#include "benchmarks/support/reporter.h"

namespace korvane::bench {
namespace {

double now_seconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Standard error of the median from the median absolute deviation, as for a normal distribution: a few rounds that the
// machine disturbed move neither.
double relative_error_of_median(const std::vector<double>& values) {
    const double centre = median(values);
    std::vector<double> deviations;
    for (const double value : values) {
        deviations.push_back(std::abs(value - centre));
    }
    return 1.2533 * 1.4826 * median(deviations) / std::sqrt(static_cast<double>(values.size())) / centre;
}

std::vector<double> ratios(const std::vector<double>& numerators, const std::vector<double>& denominators) {
    std::vector<double> quotients(numerators.size());
    std::transform(numerators.begin(), numerators.end(), denominators.begin(), quotients.begin(), std::divides<>());
    return quotients;
}

}  // namespace

Goal faster(double ratio, std::optional<double> ratioWithoutAvx512) {
    return {Goal::kFaster, ratio, ratioWithoutAvx512.value_or(ratio)};
}

Goal at_most(double ratio, std::optional<double> ratioWithoutAvx512) {
    return {Goal::kAtMost, ratio, ratioWithoutAvx512.value_or(ratio)};
}

double required(const Goal& goal) {
    return dispatches_to_avx512() ? goal.ratio : goal.ratioWithoutAvx512;
}

bool is_met(const Goal& goal, double ratio) {
    return goal.kind == Goal::kFaster ? ratio >= required(goal) : 1.0 / ratio <= required(goal);
}

void Comparison::kernel(Action run, Action prepare) {
    m_Contestants[0] = {"kernel", {}, std::move(run), std::move(prepare), 1.0, {}};
}

void Comparison::against(std::string name, std::vector<Goal> goals, Action run, Action prepare, double work) {
    m_Contestants.push_back({std::move(name), std::move(goals), std::move(run), std::move(prepare), work, {}});
}

void Comparison::against_memcpy(std::vector<Goal> goals, size_t bytes) {
    auto from = std::make_shared<std::vector<unsigned char>>(bytes, static_cast<unsigned char>(1));
    auto to = std::make_shared<std::vector<unsigned char>>(bytes, static_cast<unsigned char>(2));
    against("memcpy", std::move(goals), [from, to, bytes] { std::memcpy(to->data(), from->data(), bytes); });
}

void Comparison::verify(std::string what, std::function<bool()> check) {
    m_Checks.push_back({std::move(what), std::move(check)});
}

void Comparison::run_round() {
    const clockid_t clock = m_Clock == Clock::kThreadCpu ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC;
    std::vector<size_t> order(m_Contestants.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::shuffle(order.begin(), order.end(), m_Random);
    for (const size_t number : order) {
        Contestant& contestant = m_Contestants[number];
        if (contestant.prepare) {
            contestant.prepare();
        }
        const double start = now_seconds(clock);
        contestant.run();
        benchmark::ClobberMemory();
        contestant.seconds.push_back((now_seconds(clock) - start) / contestant.work);
    }
}

double Comparison::largest_spread() const {
    double largest = 0;
    for (size_t i = 1; i < m_Contestants.size(); ++i) {
        const std::vector<double> quotients = ratios(m_Contestants[i].seconds, m_Contestants[0].seconds);
        largest = std::max(largest, relative_error_of_median(quotients));
    }
    return largest;
}

Result Comparison::measure(const Limits& limits) {
    Result result;
    for (const Check& check : m_Checks) {
        if (!check.passes()) {
            result.error = "not verified: " + check.what;
            return result;
        }
    }
    std::optional<PinnedThread> pinned;
    if (m_Clock == Clock::kThreadCpu) {
        pinned.emplace();
    }
    run_round();
    for (Contestant& contestant : m_Contestants) {
        contestant.seconds.clear();  // the first round only touched the memory
    }
    const double end = now_seconds(CLOCK_MONOTONIC) + limits.seconds;
    do {
        run_round();
        ++result.rounds;
    } while (result.rounds < limits.leastRounds ||
             (largest_spread() > limits.spread && now_seconds(CLOCK_MONOTONIC) < end));
    result.kernelSeconds = median(m_Contestants[0].seconds);
    for (size_t i = 1; i < m_Contestants.size(); ++i) {
        const Contestant& contestant = m_Contestants[i];
        const std::vector<double> quotients = ratios(contestant.seconds, m_Contestants[0].seconds);
        result.rows.push_back({contestant.name, median(contestant.seconds), median(quotients),
                               relative_error_of_median(quotients), contestant.goals});
    }
    return result;
}

Registration::Registration(std::string name, std::function<void(Comparison&)> describe, Clock clock) {
    const auto body = [name, describe, clock](benchmark::State& state) {
        Result result;
        for ([[maybe_unused]] auto _ : state) {
            Comparison comparison(clock);
            describe(comparison);
            result = comparison.measure(Reporter::limits());
            state.SetIterationTime(result.kernelSeconds);
        }
        for (const Row& row : result.rows) {
            state.counters[row.name] = row.faster;
        }
        if (!result.error.empty()) {
            state.SkipWithError(result.error.c_str());
        }
        Reporter::keep(name, result);
    };
    // One iteration: the rounds are counted by their spread, in Comparison::measure.
    benchmark::RegisterBenchmark(name.c_str(), body)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
}

}  // namespace korvane::bench
