// The desktop twin of Android's native window: names a window of the desktop's window system.
#ifndef KORVANE_PLATFORM_DESKTOP_ANDROID_NATIVE_WINDOW_H_
#define KORVANE_PLATFORM_DESKTOP_ANDROID_NATIVE_WINDOW_H_

#include <cstdint>

// Made and owned by the caller, as is the window behind it.
struct ANativeWindow {
    // What EGL takes for a window on this desktop; on X11 the window's id.
    uintptr_t m_Handle = 0;

    // The geometry last asked for. A desktop window has the size that its owner gave it and the pixel format of its
    // visual, so the request is kept and nothing else happens.
    int32_t m_Width = 0;
    int32_t m_Height = 0;
    int32_t m_Format = 0;
};

// 0, or -EINVAL for no window or a negative size. Sizes of 0 keep the window's own.
extern "C" int32_t ANativeWindow_setBuffersGeometry(ANativeWindow* window, int32_t width, int32_t height,
                                                    int32_t format);

#endif  // KORVANE_PLATFORM_DESKTOP_ANDROID_NATIVE_WINDOW_H_
