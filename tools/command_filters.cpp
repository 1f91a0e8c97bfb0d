// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

#include "applications/effects/effects_filter_table.h"
#include "applications/filters/filter_description.h"
#include "applications/filters/gpu_image_filter_factory.h"
#include "tools/command.h"
#include "tools/json.h"

namespace korvane {
namespace {

const char* type_name(FilterParameterType type) {
    constexpr const char* kNames[] = {"invalid",     "boolean", "boolean array", "int",  "int array", "float",
                                      "float array", "double",  "double array",  "long", "bitmap"};
    return kNames[type];
}

std::string default_of(const FilterDescription& filter, const FilterParameter& parameter) {
    const std::optional<float> value = filter_default(filter, parameter);
    char text[32] = "-";
    if (value) {
        std::snprintf(text, sizeof(text), "%.4g", static_cast<double>(*value));
    }
    return text;
}

// The columns before the summary; its further lines begin below it.
constexpr const char* kColumns = "    %-15s %-12s %-17s %-8s ";
constexpr size_t kSummaryColumn = 60;

void print_parameter(const FilterDescription& filter, const FilterParameter& parameter) {
    char columns[2 * kSummaryColumn];
    std::snprintf(columns, sizeof(columns), kColumns, parameter.name, type_name(parameter.type), parameter.range,
                  default_of(filter, parameter).c_str());
    std::fputs(wrap(std::string(columns) + parameter.summary, kSummaryColumn).c_str(), stdout);
}

void print_filters() {
    std::printf(kColumns, "parameter", "type", "range", "default");
    std::printf("\n");
    for (const FilterDescription* filter : ImageFilterFactory::filters()) {
        std::printf("%s: %s\n", filter->name, filter->summary);
        for (const FilterParameter& parameter : filter->parameters) {
            print_parameter(*filter, parameter);
        }
    }
    std::printf("every filter:\n");
    for (const FilterParameter& parameter : ImageFilterBaseGL::base_parameters()) {
        print_parameter(*ImageFilterFactory::filters().front(), parameter);
    }
}

Json json(const FilterDescription& filter, std::span<const FilterParameter> parameters) {
    Json rows = Json::array();
    for (const FilterParameter& parameter : parameters) {
        double least = 0;
        double most = 0;
        const bool isBounded = std::sscanf(parameter.range, "%lf ... %lf", &least, &most) == 2;
        const std::string value = default_of(filter, parameter);
        rows.push_back({{"name", parameter.name},
                        {"type", type_name(parameter.type)},
                        {"count", parameter.count},
                        {"range", parameter.range},
                        {"minimum", isBounded ? Json(least) : Json()},
                        {"maximum", isBounded ? Json(most) : Json()},
                        {"default", value == "-" ? Json() : Json(std::strtod(value.c_str(), nullptr))},
                        {"summary", parameter.summary}});
    }
    return rows;
}

Json json_of_filters() {
    Json filters = Json::array();
    for (const FilterDescription* filter : ImageFilterFactory::filters()) {
        filters.push_back(
            {{"name", filter->name}, {"summary", filter->summary}, {"parameters", json(*filter, filter->parameters)}});
    }
    return {{"filters", filters},
            {"every_filter", json(*ImageFilterFactory::filters().front(), ImageFilterBaseGL::base_parameters())}};
}

}  // namespace

std::function<void()> setup_filters_command(CLI::App& app) {
    auto wantsJson = std::make_shared<bool>(false);
    add_json(app, *wantsJson);
    return [wantsJson] {
        if (*wantsJson) {
            std::cout << json_line(json_of_filters()) << '\n';
        } else {
            print_filters();
        }
    };
}

}  // namespace korvane
