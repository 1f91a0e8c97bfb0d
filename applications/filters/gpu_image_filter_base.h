// SPDX-License-Identifier: Apache-2.0
// ImageFilterBaseGL: the base of every filter that runs on the GPU.
//
// It owns the GPU objects of a filter, builds the shader from a fixed vertex shader, a fixed header and the filter's
// own body, and draws a full-screen quad: to the current surface (render) or into an image that is read back (process).
// A filter adds its description (filter_description.h) and rarely more.
//
// Fixed by the interface: the filters' and parameters' names, the public operations, their order and types, and the log
// lines. Filter descriptions and protected members are ours to change.
//
// Life: construct; initEngine for off-screen work, or make a context current; setupGraphics; input by setTexture or
// setBitmap; parameters; render a frame at a time or process bitmaps; delete. Everything runs on the thread whose EGL
// context is the filter's, and one filter is never used from two threads. Failures are quiet: a filter whose program
// could not be built draws nothing, after the GPU classes have logged why. When memory is short, initEngine() leaves no
// engine, setupGraphics() answers 0, an input that could not be taken is absent, and process() changes nothing.
#ifndef KORVANE_APPLICATIONS_FILTERS_GPU_IMAGE_FILTER_BASE_H_
#define KORVANE_APPLICATIONS_FILTERS_GPU_IMAGE_FILTER_BASE_H_

#include <GLES3/gl3.h>

#include <cstddef>
#include <span>

#include "applications/filters/filter_description.h"
#include "applications/filters/filter_parameter_type.h"  // IWYU pragma: export
#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/gpu/gpu_context.h"
#include "frameworks/gpu/gpu_engine.h"
#include "frameworks/gpu/gpu_framebuffer.h"
#include "frameworks/gpu/gpu_image_2d.h"
#include "frameworks/gpu/gpu_program.h"
#include "frameworks/utils/mutex.h"

class KORVANE_API ImageFilterBaseGL : public RefBase {
  public:
    ImageFilterBaseGL();

    // Releases the base's GPU objects. Must run where the filter's context may be made current.
    ~ImageFilterBaseGL() override;

    // Makes an off-screen engine of the filter's own and makes it current on this thread. An earlier engine goes first,
    // with all that was made with it: setupGraphics must follow again.
    virtual void initEngine();

    // Builds the program for the current context. `target` 0 takes external (camera) textures as input, anything else
    // 2D textures. Non-zero on success. Parameters set before are overwritten by their defaults.
    virtual int setupGraphics(GLenum target);

    // Sets the defaults; a filter with GPU objects of its own makes them here. Non-zero on success.
    virtual int initParameters();

    // A FilterParameterType; PARAMETER_TYPE_INVALID for an unknown name or null.
    virtual int getParameterType(const char* name);

    // Stores the value at `value`, read as the type that the name implies. Unknown names and null are ignored.
    virtual void setParameters(const char* name, void* value);

    // Takes a GL texture of the caller's as input. It is never deleted here. Sizes in pixels. A later call changes only
    // the sizes and keeps the first texture, because a renderer uses one texture for a filter's whole life.
    virtual void setTexture(int textureID, int inputWidth, int inputHeight, int outputWidth, int outputHeight);

    // Uploads `width` x `height` RGBA pixels, rows packed, as input; the output gets the same size.
    virtual void setBitmap(unsigned char* pixels, int width, int height);

    // The image that process() draws into; it is resized to what is processed.
    virtual void setOutput(auto_ptr<GPUImage2D>& image);

    // Draws the input to whatever is bound for drawing.
    virtual void render();

    // Filters `width` x `height` RGBA pixels in place. Needs initEngine() and setupGraphics(non-zero); without them,
    // with 2 GiB of pixels or more, or a side longer than the driver's textures, nothing happens.
    virtual void process(unsigned char* pixels, int width, int height);

    // Sends the filter's uniforms to the program that is in use.
    virtual void updateParameters();

    // Releases the GPU objects and keeps the holders.
    virtual void release();

    // False before initEngine(), and when that had no memory.
    bool has_engine() const { return mEngine.get() != nullptr; }

    // How many bytes setParameters() reads for this name; 0 for an unknown name or null.
    size_t parameter_bytes(const char* name) const;

    // What every filter knows besides its own parameters.
    static std::span<const FilterParameter> base_parameters();

    virtual const char* getFilterName();
    virtual const char* getVertexShader();

    // The body without its header.
    virtual const char* getFragmentShader();

  protected:
    // The tables of the filter's class. Last of the virtual operations, behind those that clients call.
    virtual const FilterDescription& description() const;

    auto_ptr<GPUContext> mGPUContext;       // the EGL state that was current in setupGraphics
    auto_ptr<GPUProgram> mProgram;          // the linked program
    auto_ptr<GPUImage2D> mImage2D;          // the input
    auto_ptr<GPUImage2D> mOutputImage;      // what process() draws into
    auto_ptr<GPUFramebuffer> mFramebuffer;  // binds mOutputImage in process(); 2D input only
    auto_ptr<GPUEngine> mEngine;            // off-screen engine of the filter's own
    GLfloat mPosVertices[8];                // four (x, y) in strip order
    GLfloat mTexVertices[8];                // four (s, t) to match
    float mTextureMatrix[16] = {};          // settable by name for the Java side; no shader reads it
    GLenum mTarget = 0;                     // as given to setupGraphics
    int mViewWidth = 0;                     // size of the output in pixels
    int mViewHeight = 0;
    Mutex mLock;  // carried for subclasses; nothing here takes it

  private:
    KORVANE_HIDDEN static const FilterParameter kBaseParameters[3];

    KORVANE_HIDDEN void release_engine();
    KORVANE_HIDDEN const FilterParameter* find_parameter(const char* name) const;
    KORVANE_HIDDEN void draw_quad();
};

// Ready-made store functions for FilterParameter rows; Field is a float of the filter's class.

template <auto Field>
struct FilterField;

template <typename Filter, float Filter::*Field>
struct FilterField<Field> {
    static void set(ImageFilterBaseGL& filter, float value) { static_cast<Filter&>(filter).*Field = value; }
    static constexpr FilterFloat uniform() { return static_cast<FilterFloat>(Field); }
};

template <auto Field>
void store_float(ImageFilterBaseGL& filter, const void* value) {
    FilterField<Field>::set(filter, *static_cast<const float*>(value));
}

template <auto Field>
void store_squared(ImageFilterBaseGL& filter, const void* value) {
    const float given = *static_cast<const float*>(value);
    FilterField<Field>::set(filter, given * given);
}

inline float clamp_to_unit(float value) {
    return value < 0.0F ? 0.0F : (value > 1.0F ? 1.0F : value);
}

template <auto Field>
void store_clamped(ImageFilterBaseGL& filter, const void* value) {
    FilterField<Field>::set(filter, clamp_to_unit(*static_cast<const float*>(value)));
}

#endif  // KORVANE_APPLICATIONS_FILTERS_GPU_IMAGE_FILTER_BASE_H_
