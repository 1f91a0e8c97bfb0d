// SPDX-License-Identifier: Apache-2.0
#include "applications/filters/gpu_image_filter_base.h"

#include <EGL/egl.h>

#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <new>

#include "frameworks/core/galloc_ptr.h"
#include "frameworks/gpu/gpu_script.h"
#include "frameworks/gpu/gpu_texture_layout.h"
#include "platform/log.h"

namespace {

constexpr int32_t kFormatRgba = 4;
constexpr int32_t kFormatExternal = 5;

// A quarter turn and a mirror (s falls with y, t with x) bring camera frames upright.
constexpr GLfloat kPosVertices[8] = {-1, -1, 1, -1, -1, 1, 1, 1};
constexpr GLfloat kTexVertices[8] = {1, 1, 1, 0, 0, 1, 0, 0};

constexpr char kVertexShader[] =
    "attribute vec4 a_position;\n"
    "attribute vec2 a_texcoord;\n"
    "varying vec2 v_texcoord;\n"
    "void main() {\n"
    "  gl_Position = a_position;\n"
    "  v_texcoord = a_texcoord;\n"
    "}\n";

constexpr char fragmentShaderHead[] =
    "precision mediump float;\n"
    "uniform sampler2D tex_sampler;\n"
    "varying vec2 v_texcoord;\n";

constexpr char fragmentShaderHeadOES[] =
    "#extension GL_OES_EGL_image_external : require\n"
    "precision mediump float;\n"
    "uniform samplerExternalOES tex_sampler;\n"
    "varying vec2 v_texcoord;\n";

constexpr char gFragmentShader[] =
    "void main() {\n"
    "    gl_FragColor = texture2D(tex_sampler,v_texcoord);\n"
    "}\n";

// By FilterParameterType: bytes of one value.
constexpr size_t kValueBytes[] = {0,
                                  sizeof(bool),
                                  sizeof(bool),
                                  sizeof(int32_t),
                                  sizeof(int32_t),
                                  sizeof(float),
                                  sizeof(float),
                                  sizeof(double),
                                  sizeof(double),
                                  sizeof(int64_t),
                                  sizeof(FilterBitmap)};
static_assert(std::size(kValueBytes) == PARAMETER_TYPE_BITMAP + 1);

using Text = korvane::galloc_ptr<char>;

// `first` and then `second`; null when memory is short.
Text concatenated(const char* first, const char* second) {
    const size_t firstBytes = std::strlen(first);
    const size_t secondBytes = std::strlen(second);
    Text text(static_cast<char*>(galloc_alloc(firstBytes + secondBytes + 1)));
    if (text != nullptr) {
        std::memcpy(text.get(), first, firstBytes);
        std::memcpy(text.get() + firstBytes, second, secondBytes);
    }
    return text;
}

// False when memory is short. A filter without a text is no failure here: its program cannot be built.
bool add_source(GPUScript* script, const char* name, const char* text) {
    const bool hasText = text != nullptr && *text != '\0';
    return script != nullptr && (script->addSource(name, text) || !hasText);
}

const FilterDescription kBaseDescription = {
    "ImageFilterBase", "A copy of the input", gFragmentShader, {}, {}, nullptr,
};

}  // namespace

const FilterParameter ImageFilterBaseGL::kBaseParameters[3] = {
    {"mPosVertices", PARAMETER_TYPE_FLOAT_ARRAY,
     [](ImageFilterBaseGL& filter, const void* value) {
         std::memcpy(filter.mPosVertices, value, sizeof(filter.mPosVertices));
     },
     "8 values", "corners of the quad: four (x, y) in strip order", 8},
    {"mTexVertices", PARAMETER_TYPE_FLOAT_ARRAY,
     [](ImageFilterBaseGL& filter, const void* value) {
         std::memcpy(filter.mTexVertices, value, sizeof(filter.mTexVertices));
         const GLfloat* v = filter.mTexVertices;
         KORVANE_LOGD("mTexVertices: %f, %f, %f, %f, %f, %f, %f, %f", static_cast<double>(v[0]),
                      static_cast<double>(v[1]), static_cast<double>(v[2]), static_cast<double>(v[3]),
                      static_cast<double>(v[4]), static_cast<double>(v[5]), static_cast<double>(v[6]),
                      static_cast<double>(v[7]));
     },
     "8 values", "texture coordinates of the corners: four (s, t)", 8},
    {"mTextureMatrix", PARAMETER_TYPE_FLOAT_ARRAY,
     [](ImageFilterBaseGL& filter, const void* value) {
         std::memcpy(filter.mTextureMatrix, value, sizeof(filter.mTextureMatrix));
     },
     "16 values", "kept for the renderer; not used for drawing", 16},
};

ImageFilterBaseGL::ImageFilterBaseGL() {
    std::memcpy(mPosVertices, kPosVertices, sizeof(mPosVertices));
    std::memcpy(mTexVertices, kTexVertices, sizeof(mTexVertices));
}

ImageFilterBaseGL::~ImageFilterBaseGL() {
    // Not a subclass's release(): its part of the object is gone by now.
    ImageFilterBaseGL::release();
    // The output image holds the context record inside the engine, and is dropped after it.
    const auto_ptr<GPUEngine> engineMemory(mEngine);
    mEngine.clear();
    mFramebuffer.clear();
    mOutputImage.clear();
    mImage2D.clear();
    mProgram.clear();
    mGPUContext.clear();
}

void ImageFilterBaseGL::initEngine() {
    release_engine();
    mEngine = new (std::nothrow) GPUEngine(nullptr, 0, 0);
    if (mEngine.get() != nullptr) {
        mEngine->setup();
        mEngine->startup();
    }
}

// What was made with an engine goes before it, while its context is current: the images count on the record inside the
// engine, and in another context the same GL names belong to other objects.
void ImageFilterBaseGL::release_engine() {
    if (mEngine.get() == nullptr) {
        return;
    }
    mEngine->startup();
    mFramebuffer.clear();
    mOutputImage.clear();
    mImage2D.clear();
    mProgram.clear();
    mGPUContext.clear();
    release();
}

int ImageFilterBaseGL::setupGraphics(GLenum target) {
    mGPUContext = new (std::nothrow) GPUContext(nullptr, 0, 0);
    if (mGPUContext.get() == nullptr) {
        return 0;
    }
    KORVANE_LOGD("NULL != mGPUContext.get()----------");
    mGPUContext->setEGLDisplay(eglGetCurrentDisplay());
    mGPUContext->setEGLSurface(eglGetCurrentSurface(EGL_DRAW));
    mGPUContext->setEGLContext(eglGetCurrentContext());

    const bool external = target == 0;
    const Text text = concatenated(external ? fragmentShaderHeadOES : fragmentShaderHead, getFragmentShader());
    const Text name = concatenated(getFilterName(), external ? "_oes" : "");
    if (text == nullptr || name == nullptr) {
        return 0;
    }
    KORVANE_LOGD("ImageFilterBaseGL::setupGraphics  1 this:%p", static_cast<void*>(this));
    mTarget = target;

    if (external) {
        KORVANE_LOGD("ImageFilterBaseGL::setupGraphics  1  1 this:%p", static_cast<void*>(this));
        KORVANE_LOGD("ImageFilterBaseGL::setupGraphics  1  2 this:%p", static_cast<void*>(this));
    }
    auto_ptr<GPUScript> script(new (std::nothrow) GPUScript(mGPUContext, name.get()));
    if (!add_source(script.get(), "VertexShader", getVertexShader()) ||
        !add_source(script.get(), external ? "FragmentShaderOES" : "FragmentShader", text.get())) {
        return 0;
    }
    if (external) {
        KORVANE_LOGD("ImageFilterBaseGL::setupGraphics  1  5 this:%p", static_cast<void*>(this));
    } else {
        mFramebuffer = new (std::nothrow) GPUFramebuffer(mGPUContext);
    }
    mProgram = new (std::nothrow) GPUProgram(mGPUContext, script);
    if (mProgram.get() == nullptr || (!external && mFramebuffer.get() == nullptr)) {
        return 0;
    }
    KORVANE_LOGD("ImageFilterBaseGL::setupGraphics  4 this:%p", static_cast<void*>(this));
    return initParameters();
}

int ImageFilterBaseGL::initParameters() {
    for (const FilterUniform& uniform : description().uniforms) {
        this->*uniform.field = uniform.defaultValue;
    }
    return 1;
}

std::span<const FilterParameter> ImageFilterBaseGL::base_parameters() {
    return kBaseParameters;
}

const FilterParameter* ImageFilterBaseGL::find_parameter(const char* name) const {
    if (name == nullptr) {
        return nullptr;
    }
    for (const std::span<const FilterParameter> table :
         {description().parameters, std::span<const FilterParameter>(kBaseParameters)}) {
        for (const FilterParameter& parameter : table) {
            if (std::strcmp(parameter.name, name) == 0) {
                return &parameter;
            }
        }
    }
    return nullptr;
}

int ImageFilterBaseGL::getParameterType(const char* name) {
    const FilterParameter* parameter = find_parameter(name);
    return parameter == nullptr ? PARAMETER_TYPE_INVALID : parameter->type;
}

size_t ImageFilterBaseGL::parameter_bytes(const char* name) const {
    const FilterParameter* parameter = find_parameter(name);
    return parameter == nullptr ? 0 : kValueBytes[parameter->type] * static_cast<size_t>(parameter->count);
}

void ImageFilterBaseGL::setParameters(const char* name, void* value) {
    const FilterParameter* parameter = find_parameter(name);
    if (parameter != nullptr && value != nullptr) {
        parameter->store(*this, value);
    }
}

void ImageFilterBaseGL::setTexture(int textureID, int inputWidth, int inputHeight, int outputWidth, int outputHeight) {
    const int32_t format = mTarget != 0 ? kFormatRgba : kFormatExternal;
    if (mImage2D.get() == nullptr) {
        mImage2D = new (std::nothrow)
            GPUImage2D(mGPUContext, static_cast<GLuint>(textureID), inputWidth, inputHeight, format, false, false);
    } else {
        mImage2D->set(inputWidth, inputHeight, format, nullptr);
    }
    mViewWidth = outputWidth;
    mViewHeight = outputHeight;
}

void ImageFilterBaseGL::setBitmap(unsigned char* pixels, int width, int height) {
    if (mImage2D.get() == nullptr) {
        mImage2D = new (std::nothrow) GPUImage2D(mGPUContext, width, height, kFormatRgba, pixels);
    } else {
        mImage2D->set(width, height, kFormatRgba, pixels);
    }
    mViewWidth = width;
    mViewHeight = height;
}

void ImageFilterBaseGL::setOutput(auto_ptr<GPUImage2D>& image) {
    mOutputImage = image;
}

void ImageFilterBaseGL::render() {
    if (mProgram.get() != nullptr && mProgram->beganCompute() != 0) {
        draw_quad();
    }
}

void ImageFilterBaseGL::process(unsigned char* pixels, int width, int height) {
    // A transfer counts its bytes in an int, and drivers may crash on viewports larger than any picture.
    const size_t bytes = korvane::texture_bytes({width, height, kFormatRgba});
    if (mEngine.get() == nullptr || mFramebuffer.get() == nullptr || !mFramebuffer->is_made() ||
        bytes > std::numeric_limits<int>::max()) {
        return;
    }
    // Nothing would be drawn on a longer texture, and reading it back delivers what happens to be in memory.
    GLint longest = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &longest);
    if (width > longest || height > longest) {
        KORVANE_LOGD("ImageFilterBaseGL::process %d x %d, the driver draws at most %d\n", width, height, longest);
        return;
    }
    mViewWidth = width;
    mViewHeight = height;
    if (mOutputImage.get() == nullptr) {
        mOutputImage = new (std::nothrow) GPUImage2D(mEngine->getGPUContext(), width, height, kFormatRgba);
    } else {
        mOutputImage->set(width, height, kFormatRgba, nullptr);
    }
    if (mImage2D.get() == nullptr) {
        mImage2D = new (std::nothrow) GPUImage2D(mGPUContext, width, height, kFormatRgba, pixels);
    } else {
        mImage2D->set(width, height, kFormatRgba, pixels);
    }
    if (mOutputImage.get() == nullptr || mImage2D.get() == nullptr || mProgram.get() == nullptr ||
        mProgram->beganCompute() == 0) {
        return;
    }
    GPUFramebuffer::setFramebufferTarget(mFramebuffer, mOutputImage);
    draw_quad();
    mEngine->flush();
    mOutputImage->download(pixels, static_cast<int>(bytes));
}

void ImageFilterBaseGL::draw_quad() {
    mProgram->setOutputSize(0, 0, mViewWidth, mViewHeight);
    mProgram->setSourceTarget("tex_sampler", 0, mImage2D);
    updateParameters();
    mProgram->setPosVertices(mPosVertices);
    mProgram->setTexVertices(mTexVertices);
    mProgram->endCompute();
}

void ImageFilterBaseGL::updateParameters() {
    for (const FilterUniform& uniform : description().uniforms) {
        mProgram->setParameters(uniform.name, GPU_PROGRAM_PARAMETER_TYPE_FLOAT1, &(this->*uniform.field));
    }
}

void ImageFilterBaseGL::release() {
    if (mProgram.get() != nullptr) {
        mProgram->release();
    }
    if (mImage2D.get() != nullptr) {
        mImage2D->recycle();
    }
    if (mEngine.get() != nullptr) {
        mEngine->close();
        mEngine->destroy();
    }
}

const char* ImageFilterBaseGL::getFilterName() {
    return description().name;
}

const char* ImageFilterBaseGL::getVertexShader() {
    return kVertexShader;
}

const char* ImageFilterBaseGL::getFragmentShader() {
    return description().fragmentShader;
}

const FilterDescription& ImageFilterBaseGL::description() const {
    return kBaseDescription;
}
