// SPDX-License-Identifier: Apache-2.0
// What the effects do to a photo in memory, apart from where the photo comes from and goes to. The commands and the
// playground share these functions, so that both make the same bytes.
//
// Each brings the pixels into the format that it works on; the photo's own alpha stays with it. All throw CommandError
// for values out of range and for photos that the effect cannot work on.
#ifndef KORVANE_TOOLS_EFFECTS_H_
#define KORVANE_TOOLS_EFFECTS_H_

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "algorithms/fast_detection.h"
#include "applications/gif_maker/color_quantizer.h"
#include "tools/color.h"
#include "tools/filter_session.h"
#include "tools/photo/formats.h"
#include "tools/photo/photo.h"

namespace korvane {

// A whole number that an effect takes.
struct IntegerSetting {
    const char* option;  // of the command
    int least;
    int most;
    int initial;
    const char* summary;
};

// The deviation of a blur is sqrt((radius^2 + linear * radius) / divisor).
struct BlurMethod {
    const char* name;
    const char* summary;
    const char* radius;  // what the radius is
    int maxRadius;
    double linear;
    double divisor;
    void (*blur)(unsigned char* rgba, int width, int height, double radius);

    double deviation(double distance) const;
    double radius_of(double sigma) const;
};

std::span<const BlurMethod> blur_methods();
const BlurMethod& find_blur_method(const std::string& name);

inline constexpr int kBlurRadius = 25;
inline constexpr IntegerSetting kBlurAlpha = {"--alpha", 0, 256, 0,
                                              "How much of that colour: 0 is none, 256 nothing else"};

struct BlurSettings {
    std::string method = "stack";
    double radius = kBlurRadius;
    std::optional<double> sigma;  // in place of the radius
    RgbColor color = {0, 0, 0};
    int alpha = kBlurAlpha.initial;
};

// The radius that the settings stand for, within the method's range.
double find_blur_radius(const BlurSettings& settings);
void blur_photo(Photo& photo, const BlurSettings& settings);

inline constexpr IntegerSetting kCornerThreshold = {
    "--threshold", 0, 255, 20, "By how much the pixels about a corner are darker or brighter than it, at the least"};
inline constexpr IntegerSetting kCornerDistance = {
    "--min-dist", 0, 65535, 8,
    "Keep one corner in every so many columns and half as many rows; columns 32 times as far apart share one; with 0 "
    "only one is kept at all"};

struct CornerSettings {
    int threshold = kCornerThreshold.initial;
    int minDistance = kCornerDistance.initial;
    bool keepAll = false;
};

struct Corners {
    std::vector<unsigned char> gray;
    std::vector<KeyPoint> found;
};

Corners find_corners(Photo& photo, const CornerSettings& settings);
void mark_corners(Photo& photo, const std::vector<KeyPoint>& corners);

void stamp_photo(Photo& photo, const std::string& text);

inline constexpr IntegerSetting kPaletteColors = {"-n,--colors", 1, ColorQuantizer::kMaxColors, 16,
                                                  "How many colours the palette may have"};

// The palette of the photo, which is laid over white first.
std::vector<Rgb> find_palette(Photo& photo, int colors);
// Gives each pixel the nearest of the palette's colours.
void reduce_photo(Photo& photo, const std::vector<Rgb>& palette);

struct FilterSettings {
    std::string name;
    std::vector<std::string> values;  // "key=value"
    auto_ptr<Image> table;            // RGBA, or null
};

// The thread keeps the filter for its next photo.
void filter_photo(Photo& photo, const FilterSettings& settings, DrawTimes& times);

}  // namespace korvane

#endif  // KORVANE_TOOLS_EFFECTS_H_
