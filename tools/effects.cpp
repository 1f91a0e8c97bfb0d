// SPDX-License-Identifier: Apache-2.0
#include "tools/effects.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <utility>

#include "algorithms/alpha_blend.h"
#include "algorithms/fast_blur.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/gauss_blur_iir.h"
#include "algorithms/stack_blur.h"
#include "applications/photo_timestamp/timestamp_watermark.h"
#include "frameworks/images/color_convert.h"
#include "tools/command.h"
#include "tools/filter_session.h"
#include "tools/photo/palette.h"
#include "tools/photo/photo_io.h"
#include "tools/yuyv_photo.h"

namespace korvane {
namespace {

int width_of(const Photo& photo) {
    return static_cast<int>(photo.image->getWidth());
}

int height_of(const Photo& photo) {
    return static_cast<int>(photo.image->getHeight());
}

// For blurs that take one byte a pixel: each channel is blurred by itself.
template <void (*kBlur)(unsigned char*, unsigned char*, int, int, int)>
void blur_channels(unsigned char* pixels, int width, int height, int radius) {
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    std::vector<unsigned char> channel(count);
    std::vector<unsigned char> blurred(count);
    for (size_t c = 0; c < 3; ++c) {
        for (size_t i = 0; i < count; ++i) {
            channel[i] = pixels[i * 4 + c];
        }
        kBlur(channel.data(), blurred.data(), width, height, radius);
        for (size_t i = 0; i < count; ++i) {
            pixels[i * 4 + c] = blurred[i];
        }
    }
}

void blur_fast(unsigned char* pixels, int width, int height, int radius) {
    fast_blur(reinterpret_cast<unsigned int*>(pixels), pixels, width, height, radius);
}

void blur_recursively(unsigned char* pixels, int width, int height, double radius) {
    constexpr int kLeastSide = 5;
    if (std::min(width, height) < kLeastSide) {
        throw CommandError("--method iir needs a photo of at least 5 x 5 pixels");
    }
    const auto distance = static_cast<float>(radius);
    gaussiir(pixels, width, height, 4, width * 4, distance, distance);
}

template <void (*kBlur)(unsigned char*, int, int, int)>
void blur_by_integer(unsigned char* pixels, int width, int height, double radius) {
    kBlur(pixels, width, height, static_cast<int>(std::lround(radius)));
}

// 2 ln 255: the square of the distance, in deviations, at which a Gaussian has faded to 1 / 255.
constexpr double kFadedSquare = 11.082527;

// Above 80 the recursive Gaussian loses its precision in 32-bit floats.
constexpr BlurMethod kBlurMethods[] = {
    {"stack", "weights fall evenly", "how far they reach", 254, 2, 6, blur_by_integer<stack_blur>},
    {"box", "a plain mean", "how far it reaches", 2000, 1, 3, blur_by_integer<blur_channels<box_blur>>},
    {"gauss", "three boxes", "the deviation", 2000, 0, 1, blur_by_integer<blur_channels<gauss_blur>>},
    {"fast", "as box, rounded down", "how far it reaches", 2000, 1, 3, blur_by_integer<blur_fast>},
    {"iir", "a recursive Gaussian", "where a point has faded to 1/255", 80, 0, kFadedSquare, blur_recursively},
};

[[noreturn]] void refuse(const char* option, double value, double most, const BlurMethod& method) {
    std::ostringstream text;
    text << option << ": " << value << " is not within 0 to " << most << ", the range of --method " << method.name;
    throw UsageError(text.str());
}

// Draws the outline of a square around the corner. The corner itself stays visible.
void mark(Image& photo, const KeyPoint& corner) {
    constexpr int kReach = 4;
    constexpr unsigned char kRed[3] = {255, 0, 0};
    const int width = static_cast<int>(photo.getWidth());
    const int height = static_cast<int>(photo.getHeight());
    for (int y = std::max(0, corner.y - kReach); y <= std::min(height - 1, corner.y + kReach); ++y) {
        for (int x = std::max(0, corner.x - kReach); x <= std::min(width - 1, corner.x + kReach); ++x) {
            if (std::max(std::abs(x - corner.x), std::abs(y - corner.y)) == kReach) {
                const size_t pixel = static_cast<size_t>(y) * photo.getWidth() + static_cast<size_t>(x);
                std::copy(std::begin(kRed), std::end(kRed), photo.getPlanes()[0] + pixel * 3);
            }
        }
    }
}

// Filters that move pixels move their transparency along.
void merge_alpha(Photo& photo) {
    for (size_t i = 0; i < photo.alpha.size(); ++i) {
        photo.pixels()[4 * i + 3] = photo.alpha[i];
    }
}

// Filters that change colours make all opaque; the photo keeps its own transparency then.
void take_filtered_alpha(Photo& photo) {
    Bytes own = std::move(photo.alpha);
    split_alpha(photo);
    if (photo.alpha.empty()) {
        photo.alpha = std::move(own);
    }
}

}  // namespace

double BlurMethod::deviation(double distance) const {
    return std::sqrt((distance * distance + linear * distance) / divisor);
}

double BlurMethod::radius_of(double sigma) const {
    return std::sqrt(linear * linear / 4 + divisor * sigma * sigma) - linear / 2;
}

std::span<const BlurMethod> blur_methods() {
    return kBlurMethods;
}

const BlurMethod& find_blur_method(const std::string& name) {
    std::string names;
    for (const BlurMethod& method : kBlurMethods) {
        if (name == method.name) {
            return method;
        }
        names += (names.empty() ? "" : ", ") + std::string(method.name);
    }
    throw UsageError("--method: '" + name + "' is none of " + names);
}

double find_blur_radius(const BlurSettings& settings) {
    const BlurMethod& method = find_blur_method(settings.method);
    if (!settings.sigma) {
        if (!(settings.radius >= 0 && settings.radius <= method.maxRadius)) {
            refuse("--radius", settings.radius, method.maxRadius, method);
        }
        return settings.radius;
    }
    const double most = std::floor(method.deviation(method.maxRadius) * 10) / 10;
    if (!(*settings.sigma >= 0 && *settings.sigma <= most)) {
        refuse("--sigma", *settings.sigma, most, method);
    }
    return method.radius_of(*settings.sigma);
}

void blur_photo(Photo& photo, const BlurSettings& settings) {
    const double radius = find_blur_radius(settings);
    convert_photo(photo, IMAGE_FORMAT_TYPE_RGBA);
    const int width = width_of(photo);
    const int height = height_of(photo);
    find_blur_method(settings.method).blur(photo.pixels(), width, height, radius);
    alpha_blend(photo.pixels(), width * height, settings.color.red, settings.color.green, settings.color.blue,
                settings.alpha);
}

Corners find_corners(Photo& photo, const CornerSettings& settings) {
    convert_photo(photo, IMAGE_FORMAT_TYPE_RGB);
    const int width = width_of(photo);
    const int height = height_of(photo);
    Corners corners;
    corners.gray.resize(photo.pixelCount());
    color_convert_rgb2gray(photo.pixels(), corners.gray.data(), width, height);
    FastParams params = {settings.threshold, settings.keepAll ? 0 : 1, settings.minDistance, 0, 3, 3};
    fast16(corners.gray.data(), corners.found, width, height, &params);
    return corners;
}

void mark_corners(Photo& photo, const std::vector<KeyPoint>& corners) {
    for (const KeyPoint& corner : corners) {
        mark(*photo.image, corner);
    }
}

void stamp_photo(Photo& photo, const std::string& text) {
    convert_photo(photo, IMAGE_FORMAT_TYPE_RGB);
    YuyvFrame frame = to_yuyv(photo.image);
    const std::vector<unsigned char> before = frame.bytes;
    if (!make_photo_timestamp_watermark_to_yuyv(frame.bytes.data(), frame.width, frame.height, text.c_str(), 0)) {
        throw UsageError("'" + text + "' cannot be stamped: digits, ':', '-' and blanks only, at least one");
    }
    // A stamp always darkens or brightens the edges of its digits.
    const bool isBlank = text.find_first_not_of(' ') == std::string::npos;
    if (!isBlank && frame.bytes == before) {
        throw CommandError("'" + text + "' does not fit into a photo of " + std::to_string(photo.image->getWidth()) +
                           " x " + std::to_string(photo.image->getHeight()) + " pixels");
    }
    from_yuyv(frame, photo.image);
}

std::vector<Rgb> find_palette(Photo& photo, int colors) {
    convert_photo(photo, IMAGE_FORMAT_TYPE_RGB);
    flatten(photo);
    return make_palette({photo}, colors);
}

void reduce_photo(Photo& photo, const std::vector<Rgb>& palette) {
    NearestEntry nearest(palette);
    unsigned char* pixel = photo.pixels();
    for (unsigned char* const end = pixel + photo.pixelCount() * 3; pixel != end; pixel += 3) {
        const Rgb& color = palette[nearest(pixel)];
        std::copy(color.begin(), color.end(), pixel);
    }
}

void filter_photo(Photo& photo, const FilterSettings& settings, DrawTimes& times) {
    const FilterDescription& description = describe_filter(settings.name);
    convert_photo(photo, IMAGE_FORMAT_TYPE_RGBA);
    merge_alpha(photo);
    ImageFilterBaseGL& filter = ready_filter(settings.name);
    if (settings.table.get() != nullptr) {
        const auto width = static_cast<int>(settings.table->getWidth());
        FilterBitmap bitmap{settings.table->getPlanes()[0], width, static_cast<int>(settings.table->getHeight()), 4,
                            width * 4};
        filter.setParameters("mFilterBitmap", &bitmap);
    }
    for (const std::string& value : settings.values) {
        set_filter_parameter(filter, description, value);
    }
    draw_filter(filter, photo.pixels(), width_of(photo), height_of(photo), times);
    take_filtered_alpha(photo);
}

}  // namespace korvane
