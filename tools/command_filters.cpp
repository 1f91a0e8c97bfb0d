// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>

#include "applications/effects/effects_filter_table.h"
#include "applications/filters/filter_description.h"
#include "applications/filters/gpu_image_filter_factory.h"
#include "tools/command.h"

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

void print_parameter(const FilterDescription& filter, const FilterParameter& parameter) {
    std::printf("    %-15s %-12s %-17s %-8s %s\n", parameter.name, type_name(parameter.type), parameter.range,
                default_of(filter, parameter).c_str(), parameter.summary);
}

void print_filters() {
    std::printf("    %-15s %-12s %-17s %-8s\n", "parameter", "type", "range", "default");
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

}  // namespace

std::function<void()> setup_filters_command(CLI::App& /*app*/) {
    return print_filters;
}

}  // namespace korvane
