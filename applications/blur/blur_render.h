// SPDX-License-Identifier: Apache-2.0
// The frosted background behind dialogs: a picture is blurred, then dimmed towards a color.
#ifndef KORVANE_APPLICATIONS_BLUR_BLUR_RENDER_H_
#define KORVANE_APPLICATIONS_BLUR_BLUR_RENDER_H_

namespace korvane {

// Works in place on width * height pixels of 4 bytes, red first, with no gap between rows. The fourth byte of a pixel
// stays as it is. Null pixels, or a width or height below 1, change nothing. Safe on any thread; takes no memory.
//
// `radius`: of the stack blur in pixels, clamped to 0 ... 254.
// `color`: 0xAARRGGBB; its alpha is not used.
// `weight`: of the color, 1 ... 256 for all of it. 0 makes pixels black. The last (width * height) % 8 pixels are
// blurred but not dimmed: see alpha_blend_neon.
void blur_and_dim(unsigned char* pixels, int width, int height, int radius, int color, int weight);

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_BLUR_BLUR_RENDER_H_
