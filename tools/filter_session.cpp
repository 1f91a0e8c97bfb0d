// SPDX-License-Identifier: Apache-2.0
#include "tools/filter_session.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "applications/filters/gpu_image_filter_factory.h"
#include "tools/command.h"
#include "tools/gl_context.h"

namespace korvane {
namespace {

std::string filter_names() {
    std::string names;
    for (const FilterDescription* filter : ImageFilterFactory::filters()) {
        names += std::string(names.empty() ? "" : ", ") + (filter->name + std::strlen("ImageFilter"));
    }
    return names;
}

const FilterParameter* find_parameter(const FilterDescription& description, const std::string& key) {
    for (const auto table : {description.parameters, ImageFilterBaseGL::base_parameters()}) {
        for (const FilterParameter& parameter : table) {
            if (key == parameter.name) {
                return &parameter;
            }
        }
    }
    return nullptr;
}

std::vector<float> parse_floats(const std::string& text) {
    std::vector<float> values;
    const char* at = text.c_str();
    for (;;) {
        char* end = nullptr;
        values.push_back(std::strtof(at, &end));
        if (end == at || (*end != ',' && *end != '\0')) {
            return {};
        }
        if (*end == '\0') {
            return values;
        }
        at = end + 1;
    }
}

// The parameter's row has its range as a text, "0 ... 1", unless any number will do.
void check_range(const FilterParameter& parameter, const std::vector<float>& values, const std::string& setting) {
    float least = -HUGE_VALF;
    float most = HUGE_VALF;
    const bool isBounded = std::sscanf(parameter.range, "%f ... %f", &least, &most) == 2;
    for (const float value : values) {
        if (!std::isfinite(value)) {
            throw UsageError("'" + setting + "' holds no finite number");
        }
        if (isBounded && (value < least || value > most)) {
            throw UsageError("'" + setting + "' is not within " + parameter.range);
        }
    }
}

}  // namespace

std::string short_filter_name(const FilterDescription& description) {
    std::string name = description.name + std::strlen("ImageFilter");
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return name;
}

const FilterDescription& describe_filter(const std::string& name) {
    for (const FilterDescription* filter : ImageFilterFactory::filters()) {
        if (strcasecmp(name.c_str(), filter->name) == 0 ||
            strcasecmp(("ImageFilter" + name).c_str(), filter->name) == 0) {
            return *filter;
        }
    }
    throw UsageError("there is no filter '" + name + "'; there are " + filter_names());
}

auto_ptr<ImageFilterBaseGL> open_filter(const std::string& name) {
    auto_ptr<ImageFilterBaseGL> filter(ImageFilterFactory::createFilter(describe_filter(name).name));
    if (filter.get() == nullptr) {
        throw CommandError("no memory for the filter");
    }
    filter->initEngine();
    // Without X the filter's engine stays empty, and the filter uses the thread's context.
    require_gl_context();
    if (filter->setupGraphics(1) == 0) {
        throw CommandError("the filter cannot be set up on this GPU driver");
    }
    return filter;
}

void set_filter_parameter(ImageFilterBaseGL& filter, const FilterDescription& description, const std::string& setting) {
    const size_t equals = setting.find('=');
    if (equals == std::string::npos) {
        throw UsageError("'" + setting + "' is not a setting: write key=value");
    }
    const std::string key = setting.substr(0, equals);
    const FilterParameter* parameter = find_parameter(description, key);
    if (parameter == nullptr) {
        throw UsageError(std::string(description.name) + " has no parameter '" + key + "'");
    }
    if (parameter->type == PARAMETER_TYPE_BITMAP) {
        throw UsageError("'" + key + "' is a picture: give it with --table");
    }
    std::vector<float> values = parse_floats(setting.substr(equals + 1));
    if (values.size() != static_cast<size_t>(parameter->count)) {
        throw UsageError("'" + setting + "' needs " + std::to_string(parameter->count) +
                         (parameter->count == 1 ? " number" : " numbers with commas between"));
    }
    check_range(*parameter, values, setting);
    filter.setParameters(parameter->name, values.data());
}

}  // namespace korvane
