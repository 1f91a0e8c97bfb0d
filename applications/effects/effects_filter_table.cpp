// SPDX-License-Identifier: Apache-2.0
#include "applications/effects/effects_filter_table.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "applications/filters/filter_calls.h"
#include "applications/filters/gpu_image_filter_factory.h"

namespace korvane {
namespace {

const FilterUniform* find_uniform(const FilterDescription& filter, const FilterParameter& parameter) {
    for (const FilterUniform& uniform : filter.uniforms) {
        if (parameter.type == PARAMETER_TYPE_FLOAT && std::strcmp(uniform.name, parameter.name) == 0) {
            return &uniform;
        }
    }
    return nullptr;
}

std::string default_text(const FilterDescription& filter, const FilterParameter& parameter) {
    const std::optional<float> value = filter_default(filter, parameter);
    char text[32] = "";
    if (value) {
        std::snprintf(text, sizeof(text), "%.9g", static_cast<double>(*value));
    }
    return text;
}

void append(std::string& table, const FilterDescription& filter, std::span<const FilterParameter> parameters) {
    for (const FilterParameter& parameter : parameters) {
        table += std::string("parameter\t") + parameter.name + '\t' + std::to_string(parameter.type) + '\t' +
                 std::to_string(parameter.count) + '\t' + parameter.range + '\t' + default_text(filter, parameter) +
                 '\t' + parameter.summary + '\n';
    }
}

}  // namespace

// Some filters store the square of what they are given, so the value is tried on a filter.
std::optional<float> filter_default(const FilterDescription& filter, const FilterParameter& parameter) {
    const FilterUniform* uniform = find_uniform(filter, parameter);
    if (uniform == nullptr) {
        return {};
    }
    const std::unique_ptr<ImageFilterBaseGL> trial(filter.create());
    if (trial == nullptr) {
        throw std::bad_alloc();
    }
    float value = uniform->defaultValue;
    set_filter_value(trial.get(), parameter.name, &value, sizeof(value));
    return trial.get()->*uniform->field == uniform->defaultValue ? value : std::sqrt(value);
}

std::string filter_table() {
    std::string table;
    for (const FilterDescription* filter : ImageFilterFactory::filters()) {
        table += std::string("filter\t") + filter->name + '\t' + filter->summary + '\n';
        append(table, *filter, filter->parameters);
        append(table, *filter, ImageFilterBaseGL::base_parameters());
    }
    return table;
}

}  // namespace korvane
