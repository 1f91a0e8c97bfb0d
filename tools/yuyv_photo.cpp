// SPDX-License-Identifier: Apache-2.0
#include "tools/yuyv_photo.h"

#include <algorithm>
#include <cstring>

#include "frameworks/images/color_convert.h"

namespace korvane {
namespace {

constexpr size_t kRgbBytes = 3;

// Rows of `to` columns out of rows of `from`; where there are more, the last column is repeated.
std::vector<unsigned char> with_columns(const unsigned char* rgb, size_t from, size_t to, size_t rows) {
    std::vector<unsigned char> result(to * rows * kRgbBytes);
    const size_t kept = std::min(from, to);
    for (size_t row = 0; row < rows; ++row) {
        const unsigned char* source = rgb + row * from * kRgbBytes;
        unsigned char* target = result.data() + row * to * kRgbBytes;
        std::memcpy(target, source, kept * kRgbBytes);
        for (size_t column = kept; column < to; ++column) {
            std::memcpy(target + column * kRgbBytes, source + (from - 1) * kRgbBytes, kRgbBytes);
        }
    }
    return result;
}

}  // namespace

std::vector<unsigned char> even_width_rgb(auto_ptr<Image>& photo) {
    const size_t width = photo->getWidth();
    return with_columns(photo->getPlanes()[0], width, width + width % 2, photo->getHeight());
}

YuyvFrame to_yuyv(auto_ptr<Image>& photo) {
    const std::vector<unsigned char> rgb = even_width_rgb(photo);
    YuyvFrame frame;
    frame.width = static_cast<int>(photo->getWidth() + photo->getWidth() % 2);
    frame.height = static_cast<int>(photo->getHeight());
    frame.bytes.resize(static_cast<size_t>(frame.width) * static_cast<size_t>(frame.height) * 2);
    color_convert_rgb2yuyv(rgb.data(), frame.bytes.data(), frame.width, frame.height);
    return frame;
}

void from_yuyv(const YuyvFrame& frame, auto_ptr<Image>& photo) {
    const auto width = static_cast<size_t>(frame.width);
    const auto height = static_cast<size_t>(frame.height);
    std::vector<unsigned char> rgb(width * height * kRgbBytes);
    color_convert_yuyv2rgb(frame.bytes.data(), rgb.data(), frame.width, frame.height);
    rgb = with_columns(rgb.data(), width, photo->getWidth(), height);
    std::memcpy(photo->getPlanes()[0], rgb.data(), rgb.size());
}

}  // namespace korvane
