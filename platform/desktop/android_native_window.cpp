// SPDX-License-Identifier: Apache-2.0
#include "platform/desktop/android_native_window.h"

int32_t ANativeWindow_setBuffersGeometry(ANativeWindow* window, int32_t width, int32_t height, int32_t format) {
    if (window == nullptr || width < 0 || height < 0) {
        return -1;
    }
    window->width = width;
    window->height = height;
    window->format = format;
    return 0;
}
