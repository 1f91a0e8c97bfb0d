// SPDX-License-Identifier: Apache-2.0
// Each filter's parameters set in any order, by any name, through each typed setter, with arrays of any length and
// draws in between: a picture drawn in the end is the one that the last good values alone give.
#include <string>

#include "applications/filters/filter_calls.h"
#include "applications/filters/gpu_image_filter_factory.h"
#include "tests/fuzz/fuzz.h"
#include "tools/gl_context.h"

namespace {

constexpr int kWidth = 8;
constexpr int kHeight = 4;

Bytes draw(ImageFilterBaseGL& filter) {
    Bytes pixels;
    for (size_t i = 0; i < size_t{kWidth} * kHeight * 4; ++i) {
        pixels.push_back(static_cast<unsigned char>(i % 4 == 3 ? 255 : i * 37));
    }
    filter.process(pixels.data(), kWidth, kHeight);
    return pixels;
}

// One of each, made once and kept: compiling its program takes longer than all else.
ImageFilterBaseGL& filter_of(size_t index) {
    static auto& filters = *new std::vector<auto_ptr<ImageFilterBaseGL>>;
    while (filters.size() <= index) {
        // All share the context of a machine without a display.
        unsetenv("DISPLAY");
        auto_ptr<ImageFilterBaseGL> filter(
            ImageFilterFactory::createFilter(ImageFilterFactory::filters()[filters.size()]->name));
        filter->initEngine();
        korvane::require_gl_context();
        REQUIRE(filter->setupGraphics(1) != 0);
        filters.push_back(filter);
        // It draws, and even a copy is turned.
        REQUIRE(draw(*filters.back())[4] != 4 * 37);
    }
    return *filters[index];
}

// As a new one is. initParameters() leaves the corners, which nothing else sets.
void renew(ImageFilterBaseGL& filter) {
    constexpr float kPositions[] = {-1, -1, 1, -1, -1, 1, 1, 1};
    constexpr float kTexture[] = {1, 1, 1, 0, 0, 1, 0, 0};
    REQUIRE(filter.initParameters() != 0);
    korvane::set_filter_array(&filter, "mPosVertices", const_cast<float*>(kPositions), sizeof(kPositions));
    korvane::set_filter_array(&filter, "mTexVertices", const_cast<float*>(kTexture), sizeof(kTexture));
}

std::string read_name(Input& input, const FilterDescription& description) {
    std::vector<std::string> names = {"", input.ConsumeRandomLengthString(8)};
    for (const auto table : {description.parameters, ImageFilterBaseGL::base_parameters()}) {
        for (const FilterParameter& parameter : table) {
            names.emplace_back(parameter.name);
        }
    }
    return names[input.between<size_t>(0, names.size() - 1)].c_str();
}

Bytes read_value(Input& input, size_t count) {
    Bytes bytes = input.bytes(count);
    for (size_t i = 0; input.ConsumeBool() && i + sizeof(float) <= count; i += sizeof(float)) {
        const float value = input.number(4096);
        std::memcpy(bytes.data() + i, &value, sizeof(value));
    }
    return bytes;
}

}  // namespace

void fuzz(Input& input) {
    const size_t index = input.between<size_t>(0, ImageFilterFactory::filters().size() - 1);
    const FilterDescription& description = *ImageFilterFactory::filters()[index];
    ImageFilterBaseGL& filter = filter_of(index);
    renew(filter);
    // In the order in which they were set last: one value may switch another off.
    std::vector<std::pair<std::string, Bytes>> last;
    const auto is = [](const std::string& name) { return [name](const auto& entry) { return entry.first == name; }; };
    for (int step = 0; step < 12 && input.remaining_bytes() > 0; ++step) {
        const std::string name = read_name(input, description);
        const int type = filter.getParameterType(name.c_str());
        const size_t takes = filter.parameter_bytes(name.c_str());
        REQUIRE((type == PARAMETER_TYPE_INVALID) == (takes == 0));
        // 1 to 64 bytes: each typed setter's own, and arrays that are too short or too long.
        Bytes value = read_value(input, input.ConsumeBool() && takes > 0 ? takes : input.between<size_t>(1, 64));
        const bool isArray = input.ConsumeBool();
        if (type == PARAMETER_TYPE_BITMAP) {
            // No table has this size, so it is refused; as a plain number it would be an address.
            korvane::set_filter_bitmap(&filter, name.c_str(), value.data(), 1, 0);
        }
        (isArray ? korvane::set_filter_array : korvane::set_filter_value)(&filter, name.c_str(), value.data(),
                                                                          value.size());
        if (type != PARAMETER_TYPE_INVALID && type != PARAMETER_TYPE_BITMAP && (!isArray || value.size() >= takes)) {
            value.resize(std::max<size_t>(takes, value.size()));
            std::erase_if(last, is(name));
            last.emplace_back(name, value);
        }
        if (input.one_in(4)) {
            draw(filter);
        }
    }
    const Bytes drawn = draw(filter);
    renew(filter);
    for (auto& [name, value] : last) {
        korvane::set_filter_value(&filter, name.c_str(), value.data(), value.size());
    }
    // What a quad leaves out is nobody's.
    REQUIRE(draw(filter) == drawn || std::any_of(last.begin(), last.end(), is("mPosVertices")));
}
