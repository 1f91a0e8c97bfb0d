// SPDX-License-Identifier: Apache-2.0
#include "tools/gl_context.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <array>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/gpu/gpu_engine.h"
#include "platform/egl.h"
#include "tools/command.h"

namespace korvane {
namespace {

EGLDisplay platform_display(EGLenum platform, void* native) {
    // Null where the driver knows no platforms.
    static const auto function =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
    return function == nullptr ? EGL_NO_DISPLAY : function(platform, native, nullptr);
}

class ThreadContext {
  public:
    ThreadContext() = default;
    ThreadContext(const ThreadContext&) = delete;
    ThreadContext& operator=(const ThreadContext&) = delete;
    ~ThreadContext() { close(); }

    // The platform's name, or null.
    const char* open() {
        close();
        if (open_engine()) {
            return "display";
        }
        if (open_device()) {
            return "device";
        }
        return open_display(platform_display(EGL_PLATFORM_SURFACELESS_MESA, nullptr)) ? "surfaceless" : nullptr;
    }

  private:
    // The library's own way, which needs X.
    bool open_engine() {
        m_Engine = new GPUEngine(nullptr, 0, 0);
        if (m_Engine->setup()) {
            m_Engine->startup();
        }
        return eglGetCurrentContext() != EGL_NO_CONTEXT;
    }

    // The first device that works: graphics cards come before drawing by the processor.
    bool open_device() {
        const auto query = reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
        std::array<EGLDeviceEXT, 16> devices = {};
        EGLint count = 0;
        if (query == nullptr || query(devices.size(), devices.data(), &count) != EGL_TRUE) {
            return false;
        }
        for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
            if (open_display(platform_display(EGL_PLATFORM_DEVICE_EXT, devices[i]))) {
                return true;
            }
        }
        return false;
    }

    bool open_display(EGLDisplay display) {
        if (display == EGL_NO_DISPLAY || initialize_egl_display(display) != EGL_TRUE) {
            return false;
        }
        m_Display = display;
        if (!make_current()) {
            close();
        }
        return m_Display != EGL_NO_DISPLAY;
    }

    bool make_current() {
        // clang-format off
        const EGLint request[] = {
            EGL_SURFACE_TYPE, EGL_PBUFFER_BIT,
            EGL_RENDERABLE_TYPE, EGL_OPENGL_ES3_BIT,
            EGL_RED_SIZE, 8, EGL_GREEN_SIZE, 8, EGL_BLUE_SIZE, 8, EGL_ALPHA_SIZE, 8,
            EGL_NONE};
        // clang-format on
        EGLConfig config = nullptr;
        EGLint count = 0;
        if (eglChooseConfig(m_Display, request, &config, 1, &count) != EGL_TRUE || count < 1) {
            return false;
        }
        const EGLint size[] = {EGL_WIDTH, 16, EGL_HEIGHT, 16, EGL_NONE};
        const EGLint version[] = {EGL_CONTEXT_CLIENT_VERSION, 3, EGL_NONE};
        m_Surface = eglCreatePbufferSurface(m_Display, config, size);
        m_Context = eglCreateContext(m_Display, config, EGL_NO_CONTEXT, version);
        return m_Surface != EGL_NO_SURFACE && m_Context != EGL_NO_CONTEXT &&
               eglMakeCurrent(m_Display, m_Surface, m_Surface, m_Context) == EGL_TRUE;
    }

    void close() {
        if (m_Engine.get() != nullptr) {
            m_Engine->close();
            m_Engine->destroy();
            m_Engine.clear();
        }
        if (m_Display == EGL_NO_DISPLAY) {
            return;
        }
        eglMakeCurrent(m_Display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        if (m_Surface != EGL_NO_SURFACE) {
            eglDestroySurface(m_Display, m_Surface);
        }
        if (m_Context != EGL_NO_CONTEXT) {
            eglDestroyContext(m_Display, m_Context);
        }
        terminate_egl_display(m_Display);
        m_Display = EGL_NO_DISPLAY;
        m_Surface = EGL_NO_SURFACE;
        m_Context = EGL_NO_CONTEXT;
    }

    auto_ptr<GPUEngine> m_Engine;
    EGLDisplay m_Display = EGL_NO_DISPLAY;
    EGLSurface m_Surface = EGL_NO_SURFACE;
    EGLContext m_Context = EGL_NO_CONTEXT;
};

}  // namespace

const char* require_gl_context() {
    // A thread's filters share one: opening a driver takes longer than most photos.
    thread_local ThreadContext context;
    thread_local const char* platform = nullptr;
    if (eglGetCurrentContext() != EGL_NO_CONTEXT) {
        return platform == nullptr ? "display" : platform;
    }
    platform = context.open();
    if (platform == nullptr) {
        throw CommandError(
            "no usable EGL display, and the driver draws nowhere else: with the package xvfb installed, try "
            "'xvfb-run -a -s -noreset korvane ...'");
    }
    return platform;
}

}  // namespace korvane
