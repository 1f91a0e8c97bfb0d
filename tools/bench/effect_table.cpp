// SPDX-License-Identifier: Apache-2.0
#include "tools/bench/effect_table.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "applications/effects/effects_filter_table.h"
#include "applications/filters/filter_description.h"
#include "applications/filters/gpu_image_filter_factory.h"
#include "tools/bench/known_behaviours.h"
#include "tools/color.h"
#include "tools/command.h"
#include "tools/effects.h"

namespace korvane {
namespace {

constexpr size_t kMaxSteps = 16;
constexpr size_t kMaxTextBytes = 64;
constexpr const char* kPixels = "pixels";

BenchParameter integer_row(const IntegerSetting& setting, const char* name, const char* unit) {
    const std::string options = setting.option;
    return {
        name, "integer",       static_cast<double>(setting.least),  static_cast<double>(setting.most), setting.initial,
        unit, setting.summary, options.substr(0, options.find(','))};
}

void run_blur(const BlurMethod& method, Photo& photo, const Json& values, double scale) {
    BlurSettings settings;
    settings.method = method.name;
    settings.radius = values["radius"].get<double>() * scale;
    settings.color = parse_color(values["color"].get<std::string>());
    settings.alpha = values["alpha"].get<int>();
    blur_photo(photo, settings);
}

BenchEffect blur_effect(const BlurMethod& method) {
    BenchEffect effect;
    effect.id = std::string("blur-") + method.name;
    effect.group = "Blur";
    // An abbreviation is in capitals, a word begins with one.
    effect.title = std::string(method.name) + " blur";
    const size_t capitals = effect.title.starts_with("iir") ? 3 : 1;
    std::transform(effect.title.begin(), effect.title.begin() + static_cast<ptrdiff_t>(capitals), effect.title.begin(),
                   [](char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); });
    effect.summary = std::string("Blurs (") + method.summary + ") and dims towards a colour";
    effect.command = std::string("blur --method ") + method.name;
    effect.code = blur_code(method.name);
    effect.parameters = {
        {"radius", "integer", 0, static_cast<double>(method.maxRadius), kBlurRadius, kPixels, method.radius,
         "--radius"},
        {"color", "color", 0, 0, "#000000", "", "The colour to dim towards", "--color"},
        integer_row(kBlurAlpha, "alpha", ""),
    };
    effect.apply = [&method](Photo& photo, const Json& values, double scale, DrawTimes& /*times*/) {
        run_blur(method, photo, values, scale);
    };
    return effect;
}

std::vector<BenchParameter> filter_rows(const FilterDescription& filter) {
    std::vector<BenchParameter> rows;
    for (const FilterParameter& parameter : filter.parameters) {
        float least = 0;
        float most = 0;
        const std::optional<float> initial = filter_default(filter, parameter);
        if (initial && std::sscanf(parameter.range, "%f ... %f", &least, &most) == 2) {
            // As 'korvane filters' shows it. A float's further digits are noise.
            char text[32];
            std::snprintf(text, sizeof(text), "%.4g", static_cast<double>(*initial));
            rows.push_back({parameter.name, "number", static_cast<double>(least), static_cast<double>(most),
                            std::stod(text), "", parameter.summary, "--set"});
        }
    }
    return rows;
}

void run_filter(const BenchEffect& effect, const char* name, Photo& photo, const Json& values, DrawTimes& times) {
    FilterSettings settings = {name, {}, nullptr};
    for (const BenchParameter& parameter : effect.parameters) {
        // What is not set keeps the library's own default to the last digit.
        if (values[parameter.name] != parameter.initial) {
            settings.values.push_back(parameter.name + '=' + values[parameter.name].dump());
        }
    }
    filter_photo(photo, settings, times);
}

BenchEffect filter_effect(const FilterDescription& filter) {
    BenchEffect effect;
    effect.title = filter.name + std::strlen("ImageFilter");
    effect.id = "filter-" + effect.title;
    // The others move pixels.
    const bool isOfColors = effect.title == "Table" || effect.title == "Temperature" || effect.title == "Xray";
    effect.group = isOfColors ? "Colour" : "Filters";
    effect.summary = filter.summary;
    effect.command = std::string("filter ") + effect.title;
    effect.code = filter_code(filter.name);
    effect.parameters = filter_rows(filter);
    effect.apply = [id = effect.id, name = filter.name](Photo& photo, const Json& values, double /*scale*/,
                                                        DrawTimes& times) {
        const auto& all = bench_effects();
        const auto self = std::find_if(all.begin(), all.end(), [&](const BenchEffect& e) { return e.id == id; });
        run_filter(*self, name, photo, values, times);
    };
    return effect;
}

BenchEffect palette_effect() {
    BenchParameter colors = integer_row(kPaletteColors, "colors", "colours");
    // What the command can write into a PNG file without changing the picture's size.
    colors.most = 256;
    return {"palette",
            "Colour",
            "Few colours",
            "Each pixel in the nearest of the few colours that suit the photo best",
            "palette",
            palette_code(),
            {colors},
            [](Photo& photo, const Json& values, double /*scale*/, DrawTimes& /*times*/) {
                reduce_photo(photo, find_palette(photo, values["colors"].get<int>()));
            }};
}

BenchEffect stamp_effect() {
    return {"stamp",
            "Stamp",
            "Date and time",
            "A date and time in the corner, as cameras print it",
            "stamp",
            stamp_code(),
            {{"text", "text", 0, 0, "2026-01-02 03:04", "", "Digits, \":\", \"-\" and blanks", "--text"}},
            [](Photo& photo, const Json& values, double /*scale*/, DrawTimes& /*times*/) {
                stamp_photo(photo, values["text"].get<std::string>());
            }};
}

BenchEffect corners_effect() {
    return {"corners",
            "Analysis",
            "Corners",
            "The corners that a tracker would follow, each in a red square",
            "corners",
            corners_code(),
            {integer_row(kCornerThreshold, "threshold", "levels"),
             integer_row(kCornerDistance, "distance", kPixels),
             {"keepAll", "switch", 0, 1, false, "", "Keep corners beside stronger ones, too", "--no-suppression"}},
            [](Photo& photo, const Json& values, double scale, DrawTimes& /*times*/) {
                CornerSettings settings;
                settings.threshold = values["threshold"].get<int>();
                settings.minDistance = static_cast<int>(std::lround(values["distance"].get<int>() * scale));
                settings.keepAll = values["keepAll"].get<bool>();
                mark_corners(photo, find_corners(photo, settings).found);
            }};
}

std::vector<BenchEffect> make_effects() {
    std::vector<BenchEffect> effects;
    for (const BlurMethod& method : blur_methods()) {
        effects.push_back(blur_effect(method));
    }
    for (const FilterDescription* filter : ImageFilterFactory::filters()) {
        // A copy is nothing to look at.
        if (std::strcmp(filter->name, "ImageFilterNone") != 0) {
            effects.push_back(filter_effect(*filter));
        }
    }
    // As the rail has its groups: what moves pixels before what changes colours.
    std::stable_partition(effects.begin(), effects.end(),
                          [](const BenchEffect& effect) { return effect.group != "Colour"; });
    effects.push_back(palette_effect());
    effects.push_back(stamp_effect());
    effects.push_back(corners_effect());
    return effects;
}

[[noreturn]] void refuse(const BenchEffect& effect, const BenchParameter& parameter, const std::string& why) {
    throw CommandError(effect.title + ", " + parameter.name + ": " + why);
}

void check_value(const BenchEffect& effect, const BenchParameter& parameter, const Json& value) {
    if (parameter.kind == "switch") {
        if (!value.is_boolean()) {
            refuse(effect, parameter, "it is on or off");
        }
    } else if (parameter.kind == "text" || parameter.kind == "color") {
        if (!value.is_string() || value.get_ref<const std::string&>().size() > kMaxTextBytes) {
            refuse(effect, parameter, "it is a short text");
        }
        if (parameter.kind == "color") {
            parse_color(value.get<std::string>());
        }
    } else {
        const bool isInteger = parameter.kind == "integer";
        const bool isKind = isInteger ? value.is_number_integer() : value.is_number();
        const double number = isKind ? value.get<double>() : 0;
        if (!isKind || !(number >= parameter.least && number <= parameter.most)) {
            char range[96];
            std::snprintf(range, sizeof(range), "it is a %snumber from %g to %g", isInteger ? "whole " : "",
                          parameter.least, parameter.most);
            refuse(effect, parameter, range);
        }
    }
}

BenchStep read_step(const Json& row) {
    if (!row.is_object() || !row.contains("effect") || !row["effect"].is_string()) {
        throw CommandError("a step of the chain names no effect");
    }
    const auto& id = row["effect"].get_ref<const std::string&>();
    const auto& effects = bench_effects();
    const auto effect =
        std::find_if(effects.begin(), effects.end(), [&](const BenchEffect& candidate) { return candidate.id == id; });
    if (effect == effects.end()) {
        throw CommandError("there is no such effect");
    }
    const Json given = row.value("values", Json::object());
    if (!given.is_object()) {
        throw CommandError(effect->title + ": the values are no object");
    }
    BenchStep step = {&*effect, Json::object()};
    size_t known = 0;
    for (const BenchParameter& parameter : effect->parameters) {
        const bool isGiven = given.contains(parameter.name);
        const Json& value = isGiven ? given[parameter.name] : parameter.initial;
        check_value(*effect, parameter, value);
        step.values[parameter.name] = value;
        known += isGiven ? 1 : 0;
    }
    if (known != given.size()) {
        throw CommandError(effect->title + ": a value for no parameter of this effect");
    }
    return step;
}

}  // namespace

const std::vector<BenchEffect>& bench_effects() {
    static const std::vector<BenchEffect> effects = make_effects();
    return effects;
}

std::string bench_effects_json() {
    Json rows = Json::array();
    for (const BenchEffect& effect : bench_effects()) {
        Json parameters = Json::array();
        for (const BenchParameter& p : effect.parameters) {
            parameters.push_back({{"name", p.name},
                                  {"kind", p.kind},
                                  {"least", p.least},
                                  {"most", p.most},
                                  {"initial", p.initial},
                                  {"unit", p.unit},
                                  {"summary", p.summary},
                                  {"option", p.option}});
        }
        rows.push_back({{"id", effect.id},
                        {"group", effect.group},
                        {"title", effect.title},
                        {"summary", effect.summary},
                        {"command", effect.command},
                        {"cpp", effect.code.cpp},
                        {"java", effect.code.java},
                        {"behaviours", known_behaviours(effect.id)},
                        {"parameters", parameters}});
    }
    return json_line(rows);
}

std::vector<BenchStep> read_chain(const Json& chain) {
    if (!chain.is_array() || chain.size() > kMaxSteps) {
        throw CommandError("a chain is a list of at most " + std::to_string(kMaxSteps) + " effects");
    }
    std::vector<BenchStep> steps;
    for (const Json& row : chain) {
        steps.push_back(read_step(row));
    }
    return steps;
}

}  // namespace korvane
