// SPDX-License-Identifier: Apache-2.0
// What the C++ calls of the gallery stand in; see gallery.py.
#include <cstdint>
#include <vector>

#include "algorithms/alpha_blend.h"
#include "algorithms/fast_blur.h"
#include "algorithms/fast_detection.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/gauss_blur_iir.h"
#include "algorithms/stack_blur.h"
#include "applications/filters/gpu_image_filter_base.h"
#include "applications/filters/gpu_image_filter_factory.h"
#include "applications/gif_maker/color_quantizer.h"
#include "applications/pano/panorama_interface.h"
#include "applications/photo_timestamp/timestamp_watermark.h"
#include "applications/super_capture/super_capture.h"
#include "applications/super_capture/super_capture_module.h"

extern unsigned char *rgba, *rgb, *gray, *channel, *blurred, *yuyv, *nv21;
extern int width, height;
extern float gyroX, gyroY;
