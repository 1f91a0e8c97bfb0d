// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_utils.h"

#include <EGL/eglext.h>

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>

#include "frameworks/core/memory.h"
#include "platform/log.h"

namespace {

constexpr int kMaxDrainedErrors = 32;

struct StatusName {
    GLenum status;
    const char* name;
};

constexpr StatusName kIncompleteNames[] = {
    {GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT, "attachment"},
    {GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT, "missing attachment"},
    {GL_FRAMEBUFFER_INCOMPLETE_DIMENSIONS, "dimensions"},
    {GL_FRAMEBUFFER_UNSUPPORTED, "unsupported"},
};

const char* incomplete_name(GLenum status) {
    for (const StatusName& row : kIncompleteNames) {
        if (row.status == status) {
            return row.name;
        }
    }
    return "not listed";
}

struct FreeDeleter {
    void operator()(char* text) const { std::free(text); }
};

using InfoLog = std::unique_ptr<char, FreeDeleter>;

// Null when memory is short. Terminated even if the driver writes nothing.
InfoLog make_info_log(GLint length) {
    auto* text = length > 0 ? static_cast<char*>(std::malloc(static_cast<size_t>(length))) : nullptr;
    if (text != nullptr) {
        text[0] = '\0';
    }
    return InfoLog(text);
}

// The program if it is linked, else 0 with the program deleted and the driver's reason in the log.
GLuint check_linked(GLuint program) {
    GLint status = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &status);
    if (status == GL_TRUE) {
        return program;
    }
    GLint length = 0;
    glGetProgramiv(program, GL_INFO_LOG_LENGTH, &length);
    if (const InfoLog text = make_info_log(length)) {
        glGetProgramInfoLog(program, length, nullptr, text.get());
        KORVANE_LOGD("Could not link program:\n%s\n", text.get());
    }
    glDeleteProgram(program);
    return 0;
}

GLuint link_shaders(std::initializer_list<GLuint> shaders) {
    const GLuint program = glCreateProgram();
    if (program == 0) {
        return 0;
    }
    for (const GLuint shader : shaders) {
        glAttachShader(program, shader);
        GPUUtils::checkGLError("glAttachShader");
    }
    glLinkProgram(program);
    return check_linked(program);
}

}  // namespace

EGLint GPUUtils::getContextRenderableType(void* display) {
    const char* extensions = eglQueryString(display, EGL_EXTENSIONS);
    if (extensions != nullptr && std::strstr(extensions, "EGL_KHR_create_context") != nullptr) {
        return EGL_OPENGL_ES3_BIT_KHR;
    }
    return EGL_OPENGL_ES2_BIT;
}

void GPUUtils::checkGLError(const char* op) {
    for (int i = 0; i < kMaxDrainedErrors; ++i) {
        const GLenum error = glGetError();
        if (error == GL_NO_ERROR) {
            return;
        }
        KORVANE_LOGD("after :%s() glError (0x%x)\n", op, error);
    }
}

void GPUUtils::checkEGLError(const char* op, uint32_t returnValue) {
    if (returnValue != EGL_TRUE) {
        KORVANE_LOGD("%s() returned %d\n", op, static_cast<int>(returnValue));
    }
    for (int i = 0; i < kMaxDrainedErrors; ++i) {
        const EGLint error = eglGetError();
        if (error == EGL_SUCCESS) {
            return;
        }
        KORVANE_LOGD("after %s() eglError (0x%x)\n", op, static_cast<unsigned>(error));
    }
}

void GPUUtils::checkFramebufferStatusDetail(const char* name) {
    const GLenum status = glCheckFramebufferStatus(GL_FRAMEBUFFER);
    if (status == GL_FRAMEBUFFER_COMPLETE) {
        return;
    }
    if (status == 0) {
        KORVANE_LOGD("Checking completeness of Framebuffer:%s\n", name);
        checkGLError("checkFramebufferStatus (is the target \"GL_FRAMEBUFFER\"?)");
        return;
    }
    KORVANE_LOGD("Framebuffer: %s is INCOMPLETE: %s, %x\n", name, incomplete_name(status), status);
}

GLuint GPUUtils::loadShader(int type, const char* source) {
    if (source == nullptr) {
        return 0;
    }
    const GLuint shader = glCreateShader(static_cast<GLenum>(type));
    if (shader == 0) {
        return 0;
    }
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    GLint compiled = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled != 0) {
        return shader;
    }
    GLint length = 0;
    glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
    if (length == 0) {
        return shader;
    }
    if (const InfoLog text = make_info_log(length)) {
        glGetShaderInfoLog(shader, length, nullptr, text.get());
        KORVANE_LOGD("Could not compiled shader:%d\n%s\n", type, text.get());
    }
    glDeleteShader(shader);
    return 0;
}

GLuint GPUUtils::createProgram(const char* vertexSource, const char* fragmentSource) {
    const GLuint vertexShader = loadShader(GL_VERTEX_SHADER, vertexSource);
    if (vertexShader == 0) {
        return 0;
    }
    const GLuint fragmentShader = loadShader(GL_FRAGMENT_SHADER, fragmentSource);
    if (fragmentShader == 0) {
        return 0;
    }
    return link_shaders({vertexShader, fragmentShader});
}

GLuint GPUUtils::createComputeProgram(const char* source) {
    const GLuint shader = loadShader(GL_COMPUTE_SHADER, source);
    return shader == 0 ? 0 : link_shaders({shader});
}

GLuint GPUUtils::createProgram(GLenum binaryFormat, void* binary, int length) {
    if (binary == nullptr) {
        return 0;
    }
    const GLuint program = glCreateProgram();
    if (program == 0) {
        return 0;
    }
    glProgramBinary(program, binaryFormat, binary, length);
    checkGLError("glProgramBinary");
    return check_linked(program);
}

void GPUUtils::getProgramBinary(GLuint program, int* length, GLenum* binaryFormat, void** binary) {
    if (program == 0 || length == nullptr || binaryFormat == nullptr || binary == nullptr) {
        return;
    }
    *length = 0;
    *binaryFormat = 0;
    *binary = nullptr;
    GLint size = 0;
    glGetProgramiv(program, GL_PROGRAM_BINARY_LENGTH, &size);
    if (size <= 0) {
        return;
    }
    *binary = galloc_malloc(static_cast<unsigned long>(size));
    if (*binary == nullptr) {
        return;
    }
    glGetProgramBinary(program, size, length, binaryFormat, *binary);
    checkGLError("glGetProgramBinary");
}
