// SPDX-License-Identifier: Apache-2.0
// Every effect that makes one photo out of one, as data for the playground: names, parameters with their ranges and
// defaults from the library's own tables, and what runs it.
#ifndef KORVANE_TOOLS_BENCH_EFFECT_TABLE_H_
#define KORVANE_TOOLS_BENCH_EFFECT_TABLE_H_

#include <functional>
#include <string>
#include <vector>

#include "tools/bench/effect_code.h"
#include "tools/filter_session.h"
#include "tools/json.h"
#include "tools/photo/photo.h"

namespace korvane {

struct BenchParameter {
    std::string name;
    std::string kind;  // "number", "integer", "switch", "color" or "text"
    double least;
    double most;
    Json initial;
    std::string unit;
    std::string summary;
    std::string option;  // of the command; for filters "--set"
};

struct BenchEffect {
    std::string id;
    std::string group;
    std::string title;
    std::string summary;
    std::string command;  // with the options that are always there
    EffectCode code;
    std::vector<BenchParameter> parameters;
    // `values` has every parameter. `scale` is 1, or the size of a preview as a part of the photo's: lengths in pixels
    // shrink with it. Filters add to `times`.
    std::function<void(Photo& photo, const Json& values, double scale, DrawTimes& times)> apply;
};

const std::vector<BenchEffect>& bench_effects();

// The table for the page.
std::string bench_effects_json();

// One effect of a chain, checked.
struct BenchStep {
    const BenchEffect* effect;
    Json values;
};

// Reads [{"effect": id, "values": {...}}, ...]. What is not given takes its default. Throws CommandError for an unknown
// effect or parameter, for a value of the wrong kind or out of its range, and for more steps than one photo needs.
std::vector<BenchStep> read_chain(const Json& chain);

}  // namespace korvane

#endif  // KORVANE_TOOLS_BENCH_EFFECT_TABLE_H_
