// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/support/reporter.h"

#include <cstdio>
#include <ctime>
#include <fstream>

#include "benchmarks/support/machine.h"

namespace korvane::bench {
namespace {

std::string gName;
Result gResult;

std::string as_text(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof(text), format, value);
    return text;
}

}  // namespace

void Reporter::keep(const std::string& name, const Result& result) {
    gName = name;
    gResult = result;
}

Limits& Reporter::limits() {
    static Limits limits;
    return limits;
}

bool Reporter::ReportContext(const Context&) {
    std::printf("machine: %s\n", machine_line().c_str());
    return true;
}

void Reporter::ReportRuns(const std::vector<Run>&) {
    if (!gResult.error.empty()) {
        std::printf("\n%s: FAILED, %s\n", gName.c_str(), gResult.error.c_str());
        ++m_Failed;
        return;
    }
    std::printf("\n%-48s %9.3f ms   (%zu rounds)\n", gName.c_str(), gResult.kernelSeconds * 1e3, gResult.rounds);
    nlohmann::ordered_json rows = nlohmann::ordered_json::array();
    for (const Row& row : gResult.rows) {
        print_row(row);
        rows.push_back(
            {{"name", row.name}, {"milliseconds", row.seconds * 1e3}, {"faster", row.faster}, {"spread", row.spread}});
    }
    m_Comparisons.push_back(
        {{"name", gName}, {"milliseconds", gResult.kernelSeconds * 1e3}, {"rounds", gResult.rounds}, {"rows", rows}});
    std::fflush(stdout);
}

void Reporter::print_row(const Row& row) {
    std::printf("  %-46s %9.3f ms   ours is %6.2f x as fast, takes %6.3f x the time, +-%.1f %%", row.name.c_str(),
                row.seconds * 1e3, row.faster, 1.0 / row.faster, row.spread * 100);
    for (const Goal& goal : row.goals) {
        const bool met = is_met(goal, row.faster);
        const char* wording = goal.kind == Goal::kFaster ? ">= %.2f x as fast" : "<= %.2f x the time";
        std::printf("   goal %s: %s", as_text(wording, required(goal)).c_str(), met ? "met" : "MISSED");
        ++(met ? m_Met : m_Missed);
    }
    std::printf("\n");
}

bool Reporter::save(const std::string& path) const {
    char date[32];
    const std::time_t now = std::time(nullptr);
    std::strftime(date, sizeof(date), "%Y-%m-%d %H:%M UTC", std::gmtime(&now));
    const nlohmann::ordered_json figures = {
        {"machine", machine_line()}, {"date", date}, {"comparisons", m_Comparisons}};
    std::ofstream file(path);
    file << figures.dump(1) << '\n';
    file.close();
    return file.good();
}

void Reporter::Finalize() {
    std::printf("\n%zu goals met, %zu missed; %zu comparisons failed\n", m_Met, m_Missed, m_Failed);
}

}  // namespace korvane::bench
