// SPDX-License-Identifier: Apache-2.0
#include "tools/bench/known_behaviours.h"

#include <algorithm>
#include <array>
#include <regex>
#include <string>
#include <string_view>

#include "tools/bench/page_files.h"

namespace korvane {
namespace {

// By which words a row's first cell is about an effect.
struct Topic {
    const char* effect;
    const char* words;
};

constexpr Topic kTopics[] = {
    {"blur-stack", "stack_blur"},
    {"blur-box", "`box_blur"},
    {"blur-gauss", "gauss_blur|gauss_blur_coef"},
    {"blur-fast", "fast_blur"},
    {"blur-iir", "gaussiir"},
    {"dim", "alpha_blend|weight 0"},
    {"filter-Distorted", "Distorted"},
    {"filter-Extrusion", "Extrusion"},
    {"filter-Mirror", "Mirror"},
    {"filter-Timetunnel", "Timetunnel"},
    {"filter-Table", "Table filter"},
    {"merge", "Super capture|mean luma that chooses"},
    {"sweep", "sweep|refused for its direction"},
    {"stamp", "stamp that does not fit|full stamp"},
    {"corners", "`fast16`"},
    {"palette", "ColorQuantizer"},
};

// "| a | b | c |" gives three cells; other lines give empty ones.
std::array<std::string, 3> cells_of(std::string_view line) {
    std::array<std::string, 3> cells;
    if (!line.starts_with("| ") || !line.ends_with(" |")) {
        return cells;
    }
    line.remove_prefix(2);
    for (std::string& cell : cells) {
        const size_t end = line.find(" |");
        if (end == std::string_view::npos) {
            return {};
        }
        cell = line.substr(0, end);
        line.remove_prefix(std::min(end + 3, line.size()));
    }
    return cells;
}

}  // namespace

Json known_behaviours(const std::string& effect) {
    static const std::regex link(R"(\[([^\]]*)\]\([^)]*\))");
    Json rows = Json::array();
    for (const Topic& topic : kTopics) {
        if (effect != topic.effect) {
            continue;
        }
        const std::regex words(topic.words);
        std::string_view text = known_behaviours_text();
        while (!text.empty()) {
            const size_t end = std::min(text.find('\n'), text.size() - 1);
            const std::array<std::string, 3> cells = cells_of(text.substr(0, end));
            text.remove_prefix(end + 1);
            if (std::regex_search(cells[0], words)) {
                Json row = Json::array();
                for (const std::string& cell : cells) {
                    row.push_back(std::regex_replace(cell, link, "$1"));
                }
                rows.push_back(row);
            }
        }
    }
    return rows;
}

}  // namespace korvane
