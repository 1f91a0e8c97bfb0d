// SPDX-License-Identifier: Apache-2.0
// Reporter: the table that a person reads, one block a comparison, and the count of goals met and missed.
#ifndef KORVANE_BENCHMARKS_SUPPORT_REPORTER_H_
#define KORVANE_BENCHMARKS_SUPPORT_REPORTER_H_

#include <benchmark/benchmark.h>

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "benchmarks/support/comparison.h"

namespace korvane::bench {

class Reporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

    // Google Benchmark gives its reporters numbers only; the comparison that just ran leaves its rows here.
    static void keep(const std::string& name, const Result& result);

    static Limits& limits();

    // Every figure, with machine and date, as JSON. False when the file cannot be written.
    bool save(const std::string& path) const;

    size_t missed() const { return m_Missed; }
    size_t failed() const { return m_Failed; }

  private:
    void print_row(const Row& row);

    nlohmann::ordered_json m_Comparisons = nlohmann::ordered_json::array();
    size_t m_Met = 0;
    size_t m_Missed = 0;
    size_t m_Failed = 0;
};

}  // namespace korvane::bench

#endif  // KORVANE_BENCHMARKS_SUPPORT_REPORTER_H_
