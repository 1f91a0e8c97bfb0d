// SPDX-License-Identifier: Apache-2.0
// The log seam: Android's own log on a device, the desktop twin elsewhere.
//
// All diagnostics go out at debug priority with the tag "@@@". Each text is part of the interface, also whether it ends
// with a newline.
#ifndef KORVANE_PLATFORM_LOG_H_
#define KORVANE_PLATFORM_LOG_H_

#if defined(__ANDROID__)
#include <android/log.h>
#else
#include "platform/desktop/android_log.h"
#endif

#define KORVANE_LOGD(...) __android_log_print(ANDROID_LOG_DEBUG, "@@@", __VA_ARGS__)

#endif  // KORVANE_PLATFORM_LOG_H_
