// SPDX-License-Identifier: Apache-2.0
#include "applications/effects/effects_filter.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <vector>

#include "applications/effects/effects_call.h"
#include "applications/filters/filter_calls.h"
#include "frameworks/gpu/gpu_script.h"
#include "frameworks/gpu/gpu_utils.h"
#include "frameworks/gpu/program_cache.h"

namespace korvane {
namespace {

constexpr GLenum kCameraTextures = 0;

// Puts back what was current on the thread.
class ContextScope {
  public:
    ContextScope() = default;
    ~ContextScope() {
        const CurrentContext now;
        if (m_Before.context != EGL_NO_CONTEXT) {
            m_Before.make_current();
        } else if (now.context != EGL_NO_CONTEXT) {
            eglMakeCurrent(now.display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        }
    }
    ContextScope(const ContextScope&) = delete;
    ContextScope& operator=(const ContextScope&) = delete;

    EGLContext before() const { return m_Before.context; }

  private:
    CurrentContext m_Before;
};

// The values as an array of another type.
template <typename Value>
void set_as(ImageFilterBaseGL* filter, const char* parameter, std::span<const float> values) {
    std::vector<Value> converted(values.size());
    for (size_t i = 0; i < values.size(); ++i) {
        converted[i] = static_cast<Value>(values[i]);
    }
    set_filter_array(filter, parameter, converted.data(), converted.size() * sizeof(Value));
}

}  // namespace

EffectsFilter::EffectsFilter(OwnedFilter filter, bool isOffscreen)
    : m_Filter(std::move(filter)), m_IsOffscreen(isOffscreen) {}

std::unique_ptr<EffectsFilter> EffectsFilter::open_offscreen(const char* name) {
    return open(name, true);
}

std::unique_ptr<EffectsFilter> EffectsFilter::open_on_surface(const char* name) {
    if (eglGetCurrentContext() == EGL_NO_CONTEXT) {
        throw EffectsError("no OpenGL ES context is current on this thread");
    }
    return open(name, false);
}

std::unique_ptr<EffectsFilter> EffectsFilter::open(const char* name, bool isOffscreen) {
    const ContextScope scope;
    const std::string cacheName = isOffscreen ? name : std::string(name) + "_oes";
    for (const bool isFirstTry : {true, false}) {
        OwnedFilter made(isOffscreen ? create_offscreen_filter(name) : create_surface_filter(name, kCameraTextures));
        if (made == nullptr) {
            throw EffectsError("the filter cannot be made: memory is short");
        }
        if (isOffscreen && eglGetCurrentContext() == scope.before()) {
            throw EffectsError("no OpenGL ES 3 context can be made off screen");
        }
        std::unique_ptr<EffectsFilter> filter(new EffectsFilter(std::move(made), isOffscreen));
        const bool isCached = access(program_cache_file(cacheName.c_str()).c_str(), F_OK) == 0;
        if (filter->has_program()) {
            if (!isCached) {
                filter->store_program(cacheName);
            }
            glUseProgram(0);
            return filter;
        }
        // Gone before the file is: a script that came from the cache writes itself back in the end.
        filter.reset();
        if (!isCached || !isFirstTry || std::remove(program_cache_file(cacheName.c_str()).c_str()) != 0) {
            break;
        }
    }
    throw EffectsError("the driver does not compile this filter's shader; the log says why");
}

EffectsFilter::~EffectsFilter() {
    const ContextScope scope;
    // A surface filter's names mean something else in another context. With none current, deleting them does nothing;
    // they went with their own context.
    if (m_IsOffscreen) {
        m_Own.make_current();
    } else if (scope.before() != EGL_NO_CONTEXT && scope.before() != m_Own.context) {
        eglMakeCurrent(eglGetCurrentDisplay(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }
    m_Filter.reset();
}

void EffectsFilter::enter() const {
    if (m_IsOffscreen) {
        if (!m_Own.make_current()) {
            throw EffectsError("the filter's OpenGL ES context is lost; close the filter and open it again");
        }
    } else if (eglGetCurrentContext() != m_Own.context) {
        throw EffectsError("the OpenGL ES context of this filter is not current on this thread");
    }
}

// A program that cannot be used is never put in use. Nothing shows: the viewport is empty before the first input.
bool EffectsFilter::has_program() {
    glUseProgram(0);
    m_Filter->render();
    GLint program = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    // A compiled program leaves its shaders in the context, where they would pile up as filters come and go on a
    // surface. Deleted while attached, they go with the program.
    GLuint shaders[2] = {};
    GLsizei count = 0;
    if (program != 0) {
        glGetAttachedShaders(static_cast<GLuint>(program), 2, &count, shaders);
    }
    std::for_each_n(shaders, count, glDeleteShader);
    return program != 0;
}

// Under another name first, so that nobody reads a file that is half written.
void EffectsFilter::store_program(const std::string& cacheName) const {
    static std::atomic<int> gFiles{0};
    GLint program = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    int bytes = 0;
    GLenum format = 0;
    void* binary = nullptr;
    GPUUtils::getProgramBinary(static_cast<GLuint>(program), &bytes, &format, &binary);
    if (binary == nullptr) {
        return;
    }
    const std::string partName = cacheName + "." + std::to_string(getpid()) + "." +
                                 std::to_string(gFiles.fetch_add(1, std::memory_order_relaxed));
    {
        auto_ptr<GPUContext> context(new GPUContext(nullptr, 0, 0));
        GPUScript script(context, partName.c_str());
        script.setScriptBinaryFormat(format);
        script.setScriptBinary(binary, bytes);
    }
    std::rename(program_cache_file(partName.c_str()).c_str(), program_cache_file(cacheName.c_str()).c_str());
}

void EffectsFilter::set(const char* parameter, std::span<const float> values) {
    const ContextScope scope;
    enter();
    switch (m_Filter->getParameterType(parameter)) {
        case PARAMETER_TYPE_BOOLEAN:
        case PARAMETER_TYPE_BOOLEAN_ARRAY:
            static_assert(sizeof(bool) == 1);
            return set_as<unsigned char>(m_Filter.get(), parameter, values);
        case PARAMETER_TYPE_INT:
        case PARAMETER_TYPE_INT_ARRAY:
            return set_as<int32_t>(m_Filter.get(), parameter, values);
        case PARAMETER_TYPE_DOUBLE:
        case PARAMETER_TYPE_DOUBLE_ARRAY:
            return set_as<double>(m_Filter.get(), parameter, values);
        default:
            return set_as<float>(m_Filter.get(), parameter, values);
    }
}

void EffectsFilter::set_bitmap(const char* parameter, unsigned char* pixels, int width, int height) {
    const ContextScope scope;
    enter();
    set_filter_bitmap(m_Filter.get(), parameter, pixels, width, height);
}

void EffectsFilter::apply(unsigned char* pixels, int width, int height) {
    const ContextScope scope;
    enter();
    GLint largest = 0;
    GLint viewport[2] = {};
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    if (width > largest || height > largest || width > viewport[0] || height > viewport[1]) {
        throw EffectsError("the bitmap has " + std::to_string(width) + " x " + std::to_string(height) +
                           " pixels; this GPU draws at most " + std::to_string(std::min(largest, viewport[0])) + " x " +
                           std::to_string(std::min(largest, viewport[1])));
    }
    m_Filter->process(pixels, width, height);
}

void EffectsFilter::draw(int texture, int inputWidth, int inputHeight, int outputWidth, int outputHeight) {
    enter();
    m_Filter->setTexture(texture, inputWidth, inputHeight, outputWidth, outputHeight);
    m_Filter->render();
}

}  // namespace korvane
