// SPDX-License-Identifier: Apache-2.0
// Comparison: our kernel against its scalar twin, peers and floors, as ratios measured inside one run.
//
// Milliseconds change with the machine and its mood; the ratio of two things that ran in turn, within the same second,
// on the same core, does not. So all contestants run once a round, each under a clock that stops while other programs
// have the core; a ratio is the median of the ratios of the rounds, and rounds are added until these medians are
// steady. The order is drawn anew for each round: what ran just before decides what is still in the cache, and one who
// always followed the same other would win or lose by that. Goals are ratios too, written beside the contestant that
// they name.
#ifndef KORVANE_BENCHMARKS_SUPPORT_COMPARISON_H_
#define KORVANE_BENCHMARKS_SUPPORT_COMPARISON_H_

#include <cstddef>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace korvane::bench {

enum class Clock {
    kThreadCpu,  // what the pinned thread itself spent: every kernel that runs on its caller's thread
    kWall,       // for work that other threads do as well (drawing, workers); the thread is not pinned then
};

// What the kernel must reach against one contestant.
struct Goal {
    enum Kind {
        kFaster,  // contestant's time / kernel's time is at least `ratio`
        kAtMost,  // kernel's time / contestant's time is at most `ratio`
    };
    Kind kind = kFaster;
    double ratio = 1.0;
    double ratioWithoutAvx512 = 1.0;
};

// Goal of being at least `ratio` times as fast. On processors without AVX-512 the second figure holds, where given.
Goal faster(double ratio, std::optional<double> ratioWithoutAvx512 = {});

// Goal of taking at most `ratio` times as long.
Goal at_most(double ratio, std::optional<double> ratioWithoutAvx512 = {});

struct Row {
    std::string name;
    double seconds = 0;  // median, for the work that the kernel does
    double faster = 0;   // median of contestant's time / kernel's time
    double spread = 0;   // standard error of that median, relative
    std::vector<Goal> goals;
};

struct Result {
    std::string error;  // empty when the results were verified and everything was measured
    size_t rounds = 0;
    double kernelSeconds = 0;
    std::vector<Row> rows;
};

struct Limits {
    double spread = 0.01;  // rounds are added until the spread of every ratio is below this ...
    double seconds = 10;   // ... or this much time has gone
    size_t leastRounds = 7;
};

class Comparison {
  public:
    using Action = std::function<void()>;

    explicit Comparison(Clock clock = Clock::kThreadCpu) : m_Clock(clock) {}

    // What is measured. `prepare`, where given, runs before each `run`, outside the time.
    void kernel(Action run, Action prepare = {});

    // Something to compare with; `goals` may be empty. `work` is how much of the kernel's work one run does: a
    // contestant that handles an image twice as large says 2, and its time is halved.
    void against(std::string name, std::vector<Goal> goals, Action run, Action prepare = {}, double work = 1.0);

    // The floor "memcpy": copying `bytes` between two buffers.
    void against_memcpy(std::vector<Goal> goals, size_t bytes);

    // Checked once before any timing; `false` makes the whole comparison a failure. `what` says what was expected, as
    // in "equals the scalar twin".
    void verify(std::string what, std::function<bool()> check);

    Result measure(const Limits& limits);

  private:
    struct Contestant {
        std::string name;
        std::vector<Goal> goals;
        Action run;
        Action prepare;
        double work = 1.0;
        std::vector<double> seconds;
    };
    struct Check {
        std::string what;
        std::function<bool()> passes;
    };

    void run_round();
    double largest_spread() const;

    Clock m_Clock;
    std::vector<Contestant> m_Contestants = std::vector<Contestant>(1);  // the kernel is number 0
    std::vector<Check> m_Checks;
    std::minstd_rand m_Random;  // the same orders in every run
};

// Whether `ratio` (contestant's time / kernel's time) meets the goal, and the figure that holds on this processor.
bool is_met(const Goal& goal, double ratio);
double required(const Goal& goal);

// Registers a comparison with Google Benchmark under `name` ("stack_blur/4000x3000/radius:25"). `describe` fills it in
// when it is that comparison's turn, so that its images live no longer than it does. To be used for a namespace-scope
// constant in the area's own source file.
struct Registration {
    Registration(std::string name, std::function<void(Comparison&)> describe, Clock clock = Clock::kThreadCpu);
};

}  // namespace korvane::bench

#endif  // KORVANE_BENCHMARKS_SUPPORT_COMPARISON_H_
