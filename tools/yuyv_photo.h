// SPDX-License-Identifier: Apache-2.0
// Photos as YUYV frames, as a camera delivers them.
#ifndef KORVANE_TOOLS_YUYV_PHOTO_H_
#define KORVANE_TOOLS_YUYV_PHOTO_H_

#include <vector>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/images/image.h"

namespace korvane {

struct YuyvFrame {
    // YUYV carries pixels in pairs: a photo of odd width has one more column here, its last one repeated.
    int width = 0;
    int height = 0;
    std::vector<unsigned char> bytes;
};

// RGB bytes of a photo with an even number of columns.
std::vector<unsigned char> even_width_rgb(auto_ptr<Image>& photo);

YuyvFrame to_yuyv(auto_ptr<Image>& photo);

// Overwrites the RGB photo, which has the frame's height and its width or one column less.
void from_yuyv(const YuyvFrame& frame, auto_ptr<Image>& photo);

}  // namespace korvane

#endif  // KORVANE_TOOLS_YUYV_PHOTO_H_
