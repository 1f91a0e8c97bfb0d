// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_program.h"

#include <algorithm>
#include <iterator>

#include "frameworks/gpu/gpu_image_2d.h"
#include "frameworks/gpu/gpu_image_3d.h"
#include "frameworks/gpu/gpu_utils.h"

namespace {

constexpr GLfloat kPosVertices[8] = {-1, -1, 1, -1, -1, 1, 1, 1};

// Upside down against the positions, because a picture in memory begins with its top row.
constexpr GLfloat kTexVertices[8] = {0, 1, 1, 1, 0, 0, 1, 0};

GLuint build_program(GPUScript* script) {
    if (script == nullptr) {
        return 0;
    }
    if (script->getScriptBinary() != nullptr) {
        return GPUUtils::createProgram(script->getScriptBinaryFormat(), script->getScriptBinary(),
                                       script->getScirptBinarySize());
    }
    const GPUScriptSource* vertex = script->getScriptSourceByIndex(0).get();
    const GPUScriptSource* fragment = script->getScriptSourceByIndex(1).get();
    if (vertex == nullptr || fragment == nullptr) {
        return 0;
    }
    return GPUUtils::createProgram(vertex->getSource(), fragment->getSource());
}

using SetInts = void (*)(GLint location, GLsizei count, const GLint* value);
using SetFloats = void (*)(GLint location, GLsizei count, const GLfloat* value);
using SetMatrix = void (*)(GLint location, GLsizei count, GLboolean transpose, const GLfloat* value);

void set_uniform(GLuint program, const char* name, int count, const int* value, SetInts set) {
    if (program != 0 && name != nullptr && value != nullptr) {
        set(glGetUniformLocation(program, name), count, value);
    }
}

void set_uniform(GLuint program, const char* name, int count, const float* value, SetFloats set) {
    if (program != 0 && name != nullptr && value != nullptr) {
        set(glGetUniformLocation(program, name), count, value);
    }
}

void set_uniform(GLuint program, const char* name, int count, bool transpose, const float* value, SetMatrix set) {
    if (program != 0 && name != nullptr && value != nullptr) {
        set(glGetUniformLocation(program, name), count, transpose ? GL_TRUE : GL_FALSE, value);
    }
}

}  // namespace

GPUProgram::GPUProgram(GPUContext* context, GPUScript* script)
    : m_GPUContext(context), m_GPUScript(script), m_GPUFramebuffer(context), m_ProgramHandle(build_program(script)) {
    std::copy(std::begin(kPosVertices), std::end(kPosVertices), mPosVertices);
    std::copy(std::begin(kTexVertices), std::end(kTexVertices), mTexVertices);
}

GPUProgram::GPUProgram(auto_ptr<GPUContext>& context, auto_ptr<GPUScript>& script)
    : GPUProgram(context.get(), script.get()) {}

GPUProgram::~GPUProgram() {
    GPUProgram::release();
}

int GPUProgram::beganCompute() {
    if (m_ProgramHandle == 0) {
        return 0;
    }
    glUseProgram(m_ProgramHandle);
    GPUUtils::checkGLError("glUseProgram");
    return 1;
}

template <typename Image>
void GPUProgram::bind_source(const char* uniformName, int unit, const Image* image) {
    if (m_ProgramHandle == 0 || uniformName == nullptr || image == nullptr) {
        return;
    }
    const GLint location = glGetUniformLocation(m_ProgramHandle, uniformName);
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    glBindTexture(image->getTextureTarget(), image->getTextureID());
    GPUUtils::checkGLError("glBindTexture");
    glUniform1i(location, unit);
    GPUUtils::checkGLError("glUniform1i");
}

void GPUProgram::setSourceTarget(const char* uniformName, int unit, GPUImage2D* image) {
    bind_source(uniformName, unit, image);
}

void GPUProgram::setSourceTarget(const char* uniformName, int unit, auto_ptr<GPUImage2D>& image) {
    setSourceTarget(uniformName, unit, image.get());
}

void GPUProgram::setSourceTarget(const char* uniformName, int unit, GPUImage3D* image) {
    bind_source(uniformName, unit, image);
}

void GPUProgram::setSourceTarget(const char* uniformName, int unit, auto_ptr<GPUImage3D>& image) {
    setSourceTarget(uniformName, unit, image.get());
}

void GPUProgram::setParameters(const char* uniformName, GPUProgramParameterType type, void* value) {
    constexpr SetInts kSetInts[] = {glUniform1iv, glUniform2iv, glUniform3iv, glUniform4iv};
    constexpr SetFloats kSetFloats[] = {glUniform1fv, glUniform2fv, glUniform3fv, glUniform4fv};
    constexpr SetMatrix kSetMatrix[] = {glUniformMatrix2fv, glUniformMatrix3fv, glUniformMatrix4fv};
    const int index = type;
    if (index < GPU_PROGRAM_PARAMETER_TYPE_INT1 || index > GPU_PROGRAM_PARAMETER_TYPE_MATRIX4) {
        return;
    }
    if (index >= GPU_PROGRAM_PARAMETER_TYPE_MATRIX2) {
        set_uniform(m_ProgramHandle, uniformName, 1, false, static_cast<const float*>(value),
                    kSetMatrix[index - GPU_PROGRAM_PARAMETER_TYPE_MATRIX2]);
    } else if (index >= GPU_PROGRAM_PARAMETER_TYPE_FLOAT1) {
        set_uniform(m_ProgramHandle, uniformName, 1, static_cast<const float*>(value),
                    kSetFloats[index - GPU_PROGRAM_PARAMETER_TYPE_FLOAT1]);
    } else {
        set_uniform(m_ProgramHandle, uniformName, 1, static_cast<const int*>(value), kSetInts[index]);
    }
}

void GPUProgram::setOutputSize(int x, int y, int width, int height) {
    if (m_ProgramHandle == 0) {
        return;
    }
    glViewport(x, y, width, height);
    GPUUtils::checkGLError("glViewport");
}

void GPUProgram::setOutputTarget(GPUImage2D* image) {
    GPUFramebuffer::setFramebufferTarget(&m_GPUFramebuffer, image);
}

void GPUProgram::setOutputTarget(auto_ptr<GPUImage2D>& image) {
    setOutputTarget(image.get());
}

void GPUProgram::setPosVertices(const float* vertices) {
    if (vertices != nullptr) {
        std::copy_n(vertices, std::size(mPosVertices), mPosVertices);
    }
}

void GPUProgram::setTexVertices(const float* vertices) {
    if (vertices != nullptr) {
        std::copy_n(vertices, std::size(mTexVertices), mTexVertices);
    }
}

int GPUProgram::endCompute() {
    if (m_ProgramHandle == 0) {
        return 0;
    }
    glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, mPosVertices);
    glEnableVertexAttribArray(0);
    GPUUtils::checkGLError("vertex attribute setup");
    glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, 0, mTexVertices);
    glEnableVertexAttribArray(1);
    GPUUtils::checkGLError("vertex attribute setup");
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    GPUUtils::checkGLError("glDrawArrays");
    return 1;
}

void GPUProgram::release() {
    if (m_ProgramHandle == 0) {
        return;
    }
    glDeleteProgram(m_ProgramHandle);
    m_ProgramHandle = 0;
}

void GPUProgram::_SetHostValue1iv(const char* name, int count, int* value) {
    set_uniform(m_ProgramHandle, name, count, value, glUniform1iv);
}

void GPUProgram::_SetHostValue2iv(const char* name, int count, int* value) {
    set_uniform(m_ProgramHandle, name, count, value, glUniform2iv);
}

void GPUProgram::_SetHostValue3iv(const char* name, int count, int* value) {
    set_uniform(m_ProgramHandle, name, count, value, glUniform3iv);
}

void GPUProgram::_SetHostValue4iv(const char* name, int count, int* value) {
    set_uniform(m_ProgramHandle, name, count, value, glUniform4iv);
}

void GPUProgram::_SetHostValue1fv(const char* name, int count, float* value) {
    set_uniform(m_ProgramHandle, name, count, value, glUniform1fv);
}

void GPUProgram::_SetHostValue2fv(const char* name, int count, float* value) {
    set_uniform(m_ProgramHandle, name, count, value, glUniform2fv);
}

void GPUProgram::_SetHostValue3fv(const char* name, int count, float* value) {
    set_uniform(m_ProgramHandle, name, count, value, glUniform3fv);
}

void GPUProgram::_SetHostValue4fv(const char* name, int count, float* value) {
    set_uniform(m_ProgramHandle, name, count, value, glUniform4fv);
}

void GPUProgram::_SetHostValueMatrix2fv(const char* name, int count, bool transpose, const float* value) {
    set_uniform(m_ProgramHandle, name, count, transpose, value, glUniformMatrix2fv);
}

void GPUProgram::_SetHostValueMatrix3fv(const char* name, int count, bool transpose, const float* value) {
    set_uniform(m_ProgramHandle, name, count, transpose, value, glUniformMatrix3fv);
}

void GPUProgram::_SetHostValueMatrix4fv(const char* name, int count, bool transpose, const float* value) {
    set_uniform(m_ProgramHandle, name, count, transpose, value, glUniformMatrix4fv);
}
