// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_engine.h"

#include <new>

#include "frameworks/gpu/gpu_utils.h"
#include "platform/egl.h"
#include "platform/log.h"

namespace {

// Asked to support windows and pbuffers, whatever the engine will make, so that all engines get the same config.
bool choose_config(EGLDisplay display, EGLint renderableType, EGLConfig* config, EGLint* format) {
    // clang-format off
    const EGLint request[] = {
        EGL_SURFACE_TYPE, EGL_WINDOW_BIT | EGL_PBUFFER_BIT,
        EGL_RENDERABLE_TYPE, renderableType,
        EGL_RED_SIZE, 8,
        EGL_GREEN_SIZE, 8,
        EGL_BLUE_SIZE, 8,
        EGL_ALPHA_SIZE, 8,
        EGL_DEPTH_SIZE, EGL_DONT_CARE,
        EGL_STENCIL_SIZE, EGL_DONT_CARE,
        EGL_SAMPLE_BUFFERS, EGL_DONT_CARE,
        EGL_NONE};
    // clang-format on
    EGLint count = 0;
    if (eglGetConfigs(display, nullptr, 0, &count) == EGL_FALSE) {
        KORVANE_LOGD("eglGetConfig fail\n");
        return false;
    }
    if (eglChooseConfig(display, request, config, 1, &count) == EGL_FALSE) {
        KORVANE_LOGD("eglChooseConfig fail\n");
        return false;
    }
    if (eglGetConfigAttrib(display, *config, EGL_NATIVE_VISUAL_ID, format) == EGL_FALSE) {
        KORVANE_LOGD("eglGetConfigAttrib fail\n");
        return false;
    }
    return true;
}

EGLSurface create_surface(EGLDisplay display, EGLConfig config, EGLint format, const GPUContext& context) {
    ANativeWindow* window = context.getANativeWindow();
    if (window == nullptr) {
        const EGLint attributes[] = {EGL_WIDTH, context.getWidth(), EGL_HEIGHT, context.getHeight(), EGL_NONE};
        return eglCreatePbufferSurface(display, config, attributes);
    }
    ANativeWindow_setBuffersGeometry(window, 0, 0, format);
    return eglCreateWindowSurface(display, config, korvane::egl_native_window(window), nullptr);
}

}  // namespace

GPUEngine::GPUEngine(ANativeWindow* window, uint32_t width, uint32_t height) : m_GPUContext(window, width, height) {
    m_GPUContext.incStrong();
}

GPUEngine::~GPUEngine() = default;

GPUEngine* GPUEngine::getCurrentEngine() {
    const EGLDisplay display = eglGetCurrentDisplay();
    const EGLContext context = eglGetCurrentContext();
    const EGLSurface surface = eglGetCurrentSurface(EGL_DRAW);
    if (display == EGL_NO_DISPLAY || context == EGL_NO_CONTEXT || surface == EGL_NO_SURFACE) {
        return nullptr;
    }
    auto* engine = new (std::nothrow) GPUEngine(nullptr, 0, 0);
    if (engine != nullptr) {
        engine->store(display, context, surface);
    }
    return engine;
}

bool GPUEngine::setup() {
    GPUEngine::destroy();
    const EGLDisplay display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
    GPUUtils::checkEGLError("eglGetDisplay", 1);
    if (display == EGL_NO_DISPLAY) {
        KORVANE_LOGD("eglGetDisplay fail\n");
        return false;
    }
    // Asked before the display is initialised. A driver that does not name its extensions by then is asked for OpenGL
    // ES 2 configs, which serve contexts of version 3 too.
    const EGLint renderableType = GPUUtils::getContextRenderableType(display);
    if (korvane::initialize_egl_display(display) != EGL_TRUE) {
        KORVANE_LOGD("eglInitialize fail\n");
        return false;
    }
    EGLConfig config = nullptr;
    EGLint format = 0;
    if (!choose_config(display, renderableType, &config, &format)) {
        return false;
    }
    const EGLSurface surface = create_surface(display, config, format, m_GPUContext);
    if (surface == EGL_NO_SURFACE) {
        // Also for window surfaces: this text is part of the interface.
        KORVANE_LOGD("eglCreatePbufferSurface error %d\n", eglGetError());
        return false;
    }
    return create_context(display, config, surface);
}

bool GPUEngine::create_context(EGLDisplay display, EGLConfig config, EGLSurface surface) {
    const EGLint attributes[] = {EGL_CONTEXT_CLIENT_VERSION, 3, EGL_NONE};
    const EGLContext context = eglCreateContext(display, config, EGL_NO_CONTEXT, attributes);
    GPUUtils::checkEGLError("eglCreateContext", 1);
    if (context == EGL_NO_CONTEXT) {
        KORVANE_LOGD("eglCreateContext error:%d\n", eglGetError());
        return false;
    }
    EGLint width = 0;
    EGLint height = 0;
    eglQuerySurface(display, surface, EGL_WIDTH, &width);
    eglQuerySurface(display, surface, EGL_HEIGHT, &height);
    store(display, context, surface);
    m_GPUContext.setEGLWidth(width);
    m_GPUContext.setEGLHeight(height);
    return true;
}

void GPUEngine::startup() {
    if (!is_set_up()) {
        return;
    }
    if (eglMakeCurrent(m_EGLDisplay, m_EGLSurface, m_EGLSurface, m_EGLContext) != EGL_TRUE) {
        KORVANE_LOGD("eglMakeCurrent error:%d\n", eglGetError());
    }
}

void GPUEngine::flush() {
    if (m_EGLDisplay == EGL_NO_DISPLAY || m_EGLSurface == EGL_NO_SURFACE) {
        return;
    }
    eglSwapBuffers(m_EGLDisplay, m_EGLSurface);
    // The swap's own result is not reported: with pbuffers and lost windows it would fill the log.
    GPUUtils::checkEGLError("eglSwapBuffers", 1);
}

void GPUEngine::close() {
    if (is_set_up()) {
        eglMakeCurrent(m_EGLDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }
}

void GPUEngine::destroy() {
    if (!is_set_up()) {
        return;
    }
    eglMakeCurrent(m_EGLDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroySurface(m_EGLDisplay, m_EGLSurface);
    eglDestroyContext(m_EGLDisplay, m_EGLContext);
    korvane::terminate_egl_display(m_EGLDisplay);
    store(EGL_NO_DISPLAY, EGL_NO_CONTEXT, EGL_NO_SURFACE);
    m_GPUContext.setEGLWidth(0);
    m_GPUContext.setEGLHeight(0);
}

void GPUEngine::store(EGLDisplay display, EGLContext context, EGLSurface surface) {
    m_EGLDisplay = display;
    m_EGLContext = context;
    m_EGLSurface = surface;
    m_GPUContext.setEGLDisplay(display);
    m_GPUContext.setEGLContext(context);
    m_GPUContext.setEGLSurface(surface);
}

bool GPUEngine::is_set_up() const {
    return m_EGLDisplay != EGL_NO_DISPLAY && m_EGLContext != EGL_NO_CONTEXT && m_EGLSurface != EGL_NO_SURFACE;
}
