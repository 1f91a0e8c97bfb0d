#include "applications/filters/gpu_image_filter_base.h"

#include <EGL/egl.h>

#include <cstdio>
#include <cstring>
#include <iterator>

#include "frameworks/core/memory.h"
#include "frameworks/gpu/gpu_script.h"
#include "platform/log.h"

namespace {

constexpr int32_t kFormatRgba = 4;
constexpr int32_t kFormatExternal = 5;

// s and t follow y and x, both reversed: a quarter turn and a mirror, which brings camera frames upright.
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

constexpr size_t kLongestHeadBytes = sizeof(fragmentShaderHeadOES) - 1;
static_assert(kLongestHeadBytes == 137 && sizeof(fragmentShaderHead) - 1 == 81);

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
    mEngine = new GPUEngine(nullptr, 0, 0);
    mEngine->setup();
    mEngine->startup();
}

int ImageFilterBaseGL::setupGraphics(GLenum target) {
    mGPUContext = new GPUContext(nullptr, 0, 0);
    KORVANE_LOGD("NULL != mGPUContext.get()----------");
    mGPUContext->setEGLDisplay(eglGetCurrentDisplay());
    mGPUContext->setEGLSurface(eglGetCurrentSurface(EGL_DRAW));
    mGPUContext->setEGLContext(eglGetCurrentContext());

    const char* body = getFragmentShader();
    const size_t textBytes = std::strlen(body) + kLongestHeadBytes + 1;
    auto* text = static_cast<char*>(galloc_alloc(textBytes));
    if (text == nullptr) {
        return 0;
    }
    const bool external = target == 0;
    char name[256];
    std::snprintf(name, sizeof(name), "%s%s", getFilterName(), external ? "_oes" : "");
    std::snprintf(text, textBytes, "%s%s", external ? fragmentShaderHeadOES : fragmentShaderHead, body);
    KORVANE_LOGD("ImageFilterBaseGL::setupGraphics  1 this:%p", static_cast<void*>(this));
    mTarget = target;

    if (external) {
        KORVANE_LOGD("ImageFilterBaseGL::setupGraphics  1  1 this:%p", static_cast<void*>(this));
        KORVANE_LOGD("ImageFilterBaseGL::setupGraphics  1  2 this:%p", static_cast<void*>(this));
    }
    auto_ptr<GPUScript> script(new GPUScript(mGPUContext, name));
    script->addSource("VertexShader", getVertexShader());
    script->addSource(external ? "FragmentShaderOES" : "FragmentShader", text);
    if (external) {
        KORVANE_LOGD("ImageFilterBaseGL::setupGraphics  1  5 this:%p", static_cast<void*>(this));
    } else {
        mFramebuffer = new GPUFramebuffer(mGPUContext);
    }
    galloc_free(text);

    mProgram = new GPUProgram(mGPUContext, script);
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
        mImage2D =
            new GPUImage2D(mGPUContext, static_cast<GLuint>(textureID), inputWidth, inputHeight, format, false, false);
    } else {
        mImage2D->set(inputWidth, inputHeight, format, nullptr);
    }
    mViewWidth = outputWidth;
    mViewHeight = outputHeight;
}

void ImageFilterBaseGL::setBitmap(unsigned char* pixels, int width, int height) {
    if (mImage2D.get() == nullptr) {
        mImage2D = new GPUImage2D(mGPUContext, width, height, kFormatRgba, static_cast<void*>(pixels));
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
    if (mEngine.get() == nullptr || mFramebuffer.get() == nullptr) {
        return;
    }
    mViewWidth = width;
    mViewHeight = height;
    if (mOutputImage.get() == nullptr) {
        mOutputImage = new GPUImage2D(mEngine->getGPUContext(), width, height, kFormatRgba);
    } else {
        mOutputImage->set(width, height, kFormatRgba, nullptr);
    }
    if (mImage2D.get() == nullptr) {
        mImage2D = new GPUImage2D(mGPUContext, width, height, kFormatRgba, static_cast<void*>(pixels));
    } else {
        mImage2D->set(width, height, kFormatRgba, pixels);
    }
    if (mProgram.get() == nullptr || mProgram->beganCompute() == 0) {
        return;
    }
    GPUFramebuffer::setFramebufferTarget(mFramebuffer, mOutputImage);
    draw_quad();
    mEngine->flush();
    mOutputImage->download(pixels, mOutputImage->getHeight() * mOutputImage->getWidth() * mOutputImage->getFormat());
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
