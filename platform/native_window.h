// SPDX-License-Identifier: Apache-2.0
// The native window seam: Android's own ANativeWindow on a device, the desktop twin elsewhere.
#ifndef KORVANE_PLATFORM_NATIVE_WINDOW_H_
#define KORVANE_PLATFORM_NATIVE_WINDOW_H_

#if defined(__ANDROID__)
#include <android/native_window.h>
#else
#include "platform/desktop/android_native_window.h"
#endif

#endif  // KORVANE_PLATFORM_NATIVE_WINDOW_H_
