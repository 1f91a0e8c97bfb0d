// SPDX-License-Identifier: Apache-2.0
// The desktop twin of Android's native window: an X11 window and what was asked of its buffers.
#ifndef KORVANE_PLATFORM_DESKTOP_ANDROID_NATIVE_WINDOW_H_
#define KORVANE_PLATFORM_DESKTOP_ANDROID_NATIVE_WINDOW_H_

#include <cstdint>

// Made and owned by the caller, as is the window behind it.
struct ANativeWindow {
    unsigned long x11Window = 0;  // the X11 window's id, which EGL draws to
    int32_t width = 0;            // last asked for; 0 keeps the window's own size
    int32_t height = 0;
    int32_t format = 0;  // native visual id of the config in use
};

// Stores the geometry. 0, or -1 for a null window or a negative size.
extern "C" int32_t ANativeWindow_setBuffersGeometry(ANativeWindow* window, int32_t width, int32_t height,
                                                    int32_t format);

#endif  // KORVANE_PLATFORM_DESKTOP_ANDROID_NATIVE_WINDOW_H_
