// SPDX-License-Identifier: Apache-2.0
// GPUEngine: makes, owns and destroys an EGL surface and an OpenGL ES 3 context.
//
// Order of use: construct; setup(); startup() on the rendering thread; GPU work; flush() to show the frame in a window;
// close(); destroy(); drop the last reference. EGL objects are released by destroy(), not by the destructor. All GPU
// objects must be made, used and destroyed while the context is current on the calling thread. Nothing is locked.
// startup, flush, close and destroy do nothing on an engine that is not set up. Failures are log lines.
//
// Fixed by the interface, in all headers of this folder: names, types, the order of virtual operations, format codes,
// log lines and the format of cache files. The GL calls between are ours to change.
#ifndef KORVANE_FRAMEWORKS_GPU_GPU_ENGINE_H_
#define KORVANE_FRAMEWORKS_GPU_GPU_ENGINE_H_

#include <EGL/egl.h>

#include <cstdint>

#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/gpu/gpu_context.h"

class KORVANE_API GPUEngine : public RefBase {
  public:
    // Draws into `window`, which stays the caller's and must outlive the surface; with a null window into an off-screen
    // surface of `width` by `height` pixels, where 0 by 0 will do for drawing into textures only.
    GPUEngine(ANativeWindow* window, uint32_t width, uint32_t height);
    ~GPUEngine() override;

    GPUEngine(const GPUEngine&) = delete;
    GPUEngine& operator=(const GPUEngine&) = delete;

    // Wraps the EGL state that is current on the calling thread; null without a current context and draw surface, and
    // when memory is short. The engine is new, with count 0. Its destroy() would destroy the caller's own context and
    // terminate the display.
    static GPUEngine* getCurrentEngine();

    // Makes display, surface and context. False after a log line when a step fails: what earlier steps made stays, and
    // the engine stays empty. An engine that is set up already is destroyed first.
    virtual bool setup();

    // Makes the context current on this thread.
    virtual void startup();

    // Swaps the surface's buffers.
    virtual void flush();

    // Leaves nothing current on this thread.
    virtual void close();

    // Releases the EGL objects and clears all handles; setup() may follow.
    virtual void destroy();

    // The record inside this engine. The engine must outlive every object that holds it. The engine keeps one count on
    // it, so no holder deletes it.
    GPUContext* getGPUContext() { return &m_GPUContext; }

  private:
    KORVANE_HIDDEN bool create_context(EGLDisplay display, EGLConfig config, EGLSurface surface);
    KORVANE_HIDDEN void store(EGLDisplay display, EGLContext context, EGLSurface surface);
    KORVANE_HIDDEN bool is_set_up() const;

    GPUContext m_GPUContext;
    EGLDisplay m_EGLDisplay = EGL_NO_DISPLAY;
    EGLContext m_EGLContext = EGL_NO_CONTEXT;
    EGLSurface m_EGLSurface = EGL_NO_SURFACE;
};

#endif  // KORVANE_FRAMEWORKS_GPU_GPU_ENGINE_H_
