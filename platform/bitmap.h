// SPDX-License-Identifier: Apache-2.0
// The bitmap seam: Android's own functions over android.graphics.Bitmap on a device, the desktop twin elsewhere.
#ifndef KORVANE_PLATFORM_BITMAP_H_
#define KORVANE_PLATFORM_BITMAP_H_

#if defined(__ANDROID__)
#include <android/bitmap.h>
#else
#include "platform/desktop/android_bitmap.h"
#endif

#endif  // KORVANE_PLATFORM_BITMAP_H_
