// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_image_2d.h"

#include <GLES2/gl2ext.h>

#include <mutex>

#include "frameworks/gpu/gpu_texture_layout.h"
#include "frameworks/gpu/gpu_utils.h"

namespace {

void bind(GLenum target, GLuint texture) {
    glBindTexture(target, texture);
    GPUUtils::checkGLError("glBindTexture");
}

GLuint bound_texture(GLenum target) {
    GLint texture = 0;
    glGetIntegerv(target == GL_TEXTURE_EXTERNAL_OES ? GL_TEXTURE_BINDING_EXTERNAL_OES : GL_TEXTURE_BINDING_2D,
                  &texture);
    return static_cast<GLuint>(texture);
}

}  // namespace

GPUImage2D::GPUImage2D(GPUContext* context, int32_t width, int32_t height, int32_t format)
    : GPUImage2D(context, width, height, format, nullptr) {}

GPUImage2D::GPUImage2D(auto_ptr<GPUContext>& context, int32_t width, int32_t height, int32_t format)
    : GPUImage2D(context.get(), width, height, format, nullptr) {}

GPUImage2D::GPUImage2D(GPUContext* context, GLuint texture, int32_t width, int32_t height, int32_t format,
                       bool initialise, bool maintainBySelf)
    : m_GPUContext(context),
      m_GPUFramebuffer(context),
      m_GPUPixelBuffer(context),
      m_TextureID(texture),
      m_TextureMaintainBySelf(maintainBySelf) {
    describe(width, height, format);
    if (initialise) {
        specify(nullptr);
    }
}

GPUImage2D::GPUImage2D(auto_ptr<GPUContext>& context, GLuint texture, int32_t width, int32_t height, int32_t format,
                       bool initialise, bool maintainBySelf)
    : GPUImage2D(context.get(), texture, width, height, format, initialise, maintainBySelf) {}

GPUImage2D::GPUImage2D(GPUContext* context, int32_t width, int32_t height, int32_t format, void* pixels)
    : m_GPUContext(context), m_GPUFramebuffer(context), m_GPUPixelBuffer(context) {
    glGenTextures(1, &m_TextureID);
    GPUUtils::checkGLError("glGenTextures");
    set(width, height, format, pixels);
}

GPUImage2D::GPUImage2D(auto_ptr<GPUContext>& context, int32_t width, int32_t height, int32_t format, void* pixels)
    : GPUImage2D(context.get(), width, height, format, pixels) {}

GPUImage2D::~GPUImage2D() {
    recycle();
}

void GPUImage2D::set(int32_t width, int32_t height, int32_t format, void* pixels) {
    describe(width, height, format);
    specify(pixels);
}

int GPUImage2D::upload(void* pixels, int size) {
    if (pixels == nullptr || !holds_pixels(size)) {
        return 0;
    }
    const std::lock_guard<Mutex> guard(m_MutexLocked);
    const GLuint found = bound_texture(m_TextureTarget);
    bind(m_TextureTarget, m_TextureID);
    m_GPUPixelBuffer.uploadImage(this, pixels);
    bind(m_TextureTarget, found);
    return 1;
}

int GPUImage2D::download(void* buffer, int size) {
    if (buffer == nullptr || !holds_pixels(size) || !m_GPUFramebuffer.is_made()) {
        return 0;
    }
    const std::lock_guard<Mutex> guard(m_MutexLocked);
    GPUFramebuffer::setFramebufferTarget(&m_GPUFramebuffer, this);
    m_GPUPixelBuffer.downloadImage(this, buffer);
    GPUFramebuffer::setFramebufferTarget(nullptr, nullptr);
    return 1;
}

void GPUImage2D::recycle() {
    if (!m_TextureMaintainBySelf || m_TextureID == 0) {
        return;
    }
    glDeleteTextures(1, &m_TextureID);
    GPUUtils::checkGLError("glDeleteTextures");
    m_TextureID = 0;
}

GLenum GPUImage2D::selectTextureTarget(int32_t format) {
    return format == korvane::kExternalFormatCode ? GL_TEXTURE_EXTERNAL_OES : GL_TEXTURE_2D;
}

GLint GPUImage2D::selectTextureFormat(int32_t format) {
    return korvane::texture_format(format);
}

void GPUImage2D::describe(int32_t width, int32_t height, int32_t format) {
    m_Width = width;
    m_Height = height;
    m_Format = format;
    m_TextureTarget = selectTextureTarget(format);
    m_TextureFormat = static_cast<GLuint>(selectTextureFormat(format));
}

void GPUImage2D::specify(void* pixels) {
    bind(m_TextureTarget, m_TextureID);
    if (pixels == nullptr) {
        glTexImage2D(m_TextureTarget, 0, static_cast<GLint>(m_TextureFormat), m_Width, m_Height, 0, m_TextureFormat,
                     GL_UNSIGNED_BYTE, nullptr);
        GPUUtils::checkGLError("glTexImage2D");
    } else {
        m_GPUPixelBuffer.uploadImage(this, pixels);
    }
    glTexParameterf(m_TextureTarget, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameterf(m_TextureTarget, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameterf(m_TextureTarget, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameterf(m_TextureTarget, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    GPUUtils::checkGLError("glTexParameterf");
    bind(m_TextureTarget, 0);
}

bool GPUImage2D::holds_pixels(int size) const {
    return size >= 0 && korvane::texture_bytes({m_Width, m_Height, m_Format}) <= static_cast<size_t>(size);
}
