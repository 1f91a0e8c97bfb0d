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

// eglInitialize and eglTerminate with the counting that desktop drivers lack: a display is terminated when the last
// that initialised it here is done with it, and not at all when it had been initialised elsewhere before. Terminating a
// display that nobody initialised here terminates it at once. The results are EGL's; both are safe on any thread.
EGLBoolean initialize_egl_display(EGLDisplay display);
EGLBoolean terminate_egl_display(EGLDisplay display);

inline EGLNativeWindowType egl_native_window(ANativeWindow* window) {
    return window->x11Window;
}

#endif

}  // namespace korvane

#endif  // KORVANE_PLATFORM_EGL_H_
