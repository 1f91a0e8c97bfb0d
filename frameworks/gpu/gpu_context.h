// SPDX-License-Identifier: Apache-2.0
// GPUContext: the record of one EGL display, surface and context that every GPU object keeps a reference to.
//
// Passive: it never calls EGL and owns nothing, neither the window nor the EGL objects. So any code may make one by
// hand and fill in the handles of a context that is already current on its thread.
#ifndef KORVANE_FRAMEWORKS_GPU_GPU_CONTEXT_H_
#define KORVANE_FRAMEWORKS_GPU_GPU_CONTEXT_H_

#include <EGL/egl.h>

#include <cstdint>

#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"

struct ANativeWindow;

class KORVANE_API GPUContext : public RefBase {
  public:
    // `window` is drawn into; null for work off screen, and only then `width` and `height` (in pixels) matter. The EGL
    // handles start null, the EGL sizes 0.
    GPUContext(ANativeWindow* window, uint32_t width, uint32_t height);
    ~GPUContext() override;

    ANativeWindow* getANativeWindow() const { return m_ANativeWindow; }
    int32_t getWidth() const { return m_Width; }
    int32_t getHeight() const { return m_Height; }

    EGLDisplay getEGLDisplay() const { return m_EGLDisplay; }
    void setEGLDisplay(EGLDisplay display) { m_EGLDisplay = display; }

    EGLContext getEGLContext() const { return m_EGLContext; }
    void setEGLContext(EGLContext context) { m_EGLContext = context; }

    EGLSurface getEGLSurface() const { return m_EGLSurface; }
    void setEGLSurface(EGLSurface surface) { m_EGLSurface = surface; }

    // The size that the surface really got.
    uint32_t getEGLWidth() const { return m_EGLWidth; }
    void setEGLWidth(int32_t width) { m_EGLWidth = static_cast<uint32_t>(width); }

    uint32_t getEGLHeight() const { return m_EGLHeight; }
    void setEGLHeight(int32_t height) { m_EGLHeight = static_cast<uint32_t>(height); }

  private:
    ANativeWindow* m_ANativeWindow;
    int32_t m_Width;
    int32_t m_Height;
    EGLDisplay m_EGLDisplay = EGL_NO_DISPLAY;
    EGLContext m_EGLContext = EGL_NO_CONTEXT;
    EGLSurface m_EGLSurface = EGL_NO_SURFACE;
    uint32_t m_EGLWidth = 0;
    uint32_t m_EGLHeight = 0;
};

#endif  // KORVANE_FRAMEWORKS_GPU_GPU_CONTEXT_H_
