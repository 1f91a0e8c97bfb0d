// SPDX-License-Identifier: Apache-2.0
// EffectsFilter: a GPU filter together with the context that it belongs to.
//
// Every operation that fails throws an EffectsError with the reason. An off-screen filter has a context of its own and
// leaves the one that is current on the calling thread as it was; its operations may be called on any thread, one at a
// time. A surface filter uses the context that was current when it was opened, and is drawn where that is current.
//
// Opening also looks after the program cache, which the filters only read: a program that was compiled is stored, and
// one that the driver refuses is deleted and compiled anew.
#ifndef KORVANE_APPLICATIONS_EFFECTS_EFFECTS_FILTER_H_
#define KORVANE_APPLICATIONS_EFFECTS_EFFECTS_FILTER_H_

#include <EGL/egl.h>

#include <memory>
#include <span>
#include <string>

#include "applications/filters/gpu_image_filter_base.h"

namespace korvane {

// What is current on a thread.
struct CurrentContext {
    EGLDisplay display = eglGetCurrentDisplay();
    EGLSurface draw = eglGetCurrentSurface(EGL_DRAW);
    EGLSurface read = eglGetCurrentSurface(EGL_READ);
    EGLContext context = eglGetCurrentContext();

    bool make_current() const { return eglMakeCurrent(display, draw, read, context) == EGL_TRUE; }
};

class EffectsFilter {
  public:
    static std::unique_ptr<EffectsFilter> open_offscreen(const char* name);

    // For camera textures.
    static std::unique_ptr<EffectsFilter> open_on_surface(const char* name);

    // On any thread, also when the context is gone.
    ~EffectsFilter();

    EffectsFilter(const EffectsFilter&) = delete;
    EffectsFilter& operator=(const EffectsFilter&) = delete;

    // As many values as the parameter has; they are converted to its type.
    void set(const char* parameter, std::span<const float> values);
    void set_bitmap(const char* parameter, unsigned char* pixels, int width, int height);

    // Off screen: filters RGBA pixels in place.
    void apply(unsigned char* pixels, int width, int height);

    // On a surface: draws the texture to what is bound for drawing.
    void draw(int texture, int inputWidth, int inputHeight, int outputWidth, int outputHeight);

  private:
    // The destructor of the Table filter leaves its table; release() frees it.
    struct ReleaseAndDelete {
        void operator()(ImageFilterBaseGL* filter) const {
            filter->release();
            delete filter;
        }
    };
    using OwnedFilter = std::unique_ptr<ImageFilterBaseGL, ReleaseAndDelete>;

    EffectsFilter(OwnedFilter filter, bool isOffscreen);

    static std::unique_ptr<EffectsFilter> open(const char* name, bool isOffscreen);
    void enter() const;
    bool has_program();
    void store_program(const std::string& cacheName) const;

    OwnedFilter m_Filter;
    bool m_IsOffscreen;
    CurrentContext m_Own;
};

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_EFFECTS_EFFECTS_FILTER_H_
