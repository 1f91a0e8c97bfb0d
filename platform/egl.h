// SPDX-License-Identifier: Apache-2.0
// The EGL seam: displays that many may open and close, and what EGL takes for a native window.
#ifndef KORVANE_PLATFORM_EGL_H_
#define KORVANE_PLATFORM_EGL_H_

#include <EGL/egl.h>

#include "platform/native_window.h"

namespace korvane {

#if defined(__ANDROID__)

// Android counts both calls of a display itself.
inline EGLBoolean initialize_egl_display(EGLDisplay display) {
    return eglInitialize(display, nullptr, nullptr);
}

inline EGLBoolean terminate_egl_display(EGLDisplay display) {
    return eglTerminate(display);
}

inline EGLNativeWindowType egl_native_window(ANativeWindow* window) {
    return window;
}

#else

// eglInitialize and eglTerminate with the counting that desktop drivers lack. A display is terminated when the last
// user that initialised it here is done with it. A display that was initialised elsewhere before is never terminated
// here; one that nobody initialised is terminated at once. The results are EGL's; initialising also answers EGL_FALSE
// when memory is short. Both are safe on any thread.
EGLBoolean initialize_egl_display(EGLDisplay display);
EGLBoolean terminate_egl_display(EGLDisplay display);

inline EGLNativeWindowType egl_native_window(ANativeWindow* window) {
    return window->x11Window;
}

#endif

}  // namespace korvane

#endif  // KORVANE_PLATFORM_EGL_H_
