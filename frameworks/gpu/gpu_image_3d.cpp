// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_image_3d.h"

#include "frameworks/gpu/gpu_texture_layout.h"
#include "frameworks/gpu/gpu_utils.h"

GPUImage3D::GPUImage3D(GPUContext* context, int32_t width, int32_t height, int32_t depth, int32_t format)
    : GPUImage3D(context, width, height, depth, format, nullptr) {}

GPUImage3D::GPUImage3D(auto_ptr<GPUContext>& context, int32_t width, int32_t height, int32_t depth, int32_t format)
    : GPUImage3D(context.get(), width, height, depth, format, nullptr) {}

GPUImage3D::GPUImage3D(GPUContext* context, GLuint texture, int32_t width, int32_t height, int32_t depth,
                       int32_t format, bool initialise, bool maintainBySelf)
    : m_GPUContext(context), m_GPUPixelBuffer(context), m_TextureID(texture), m_TextureMaintainBySelf(maintainBySelf) {
    describe(width, height, depth, format);
    if (initialise) {
        specify(nullptr);
    }
}

GPUImage3D::GPUImage3D(auto_ptr<GPUContext>& context, GLuint texture, int32_t width, int32_t height, int32_t depth,
                       int32_t format, bool initialise, bool maintainBySelf)
    : GPUImage3D(context.get(), texture, width, height, depth, format, initialise, maintainBySelf) {}

GPUImage3D::GPUImage3D(GPUContext* context, int32_t width, int32_t height, int32_t depth, int32_t format, void* pixels)
    : m_GPUContext(context), m_GPUPixelBuffer(context) {
    glGenTextures(1, &m_TextureID);
    GPUUtils::checkGLError("glGenTextures");
    set(width, height, depth, format, pixels);
}

GPUImage3D::GPUImage3D(auto_ptr<GPUContext>& context, int32_t width, int32_t height, int32_t depth, int32_t format,
                       void* pixels)
    : GPUImage3D(context.get(), width, height, depth, format, pixels) {}

GPUImage3D::~GPUImage3D() {
    recycle();
}

void GPUImage3D::set(int32_t width, int32_t height, int32_t depth, int32_t format, void* pixels) {
    describe(width, height, depth, format);
    specify(pixels);
}

void GPUImage3D::recycle() {
    if (!m_TextureMaintainBySelf || m_TextureID == 0) {
        return;
    }
    glDeleteTextures(1, &m_TextureID);
    GPUUtils::checkGLError("glDeleteTextures");
    m_TextureID = 0;
}

GLenum GPUImage3D::selectTextureTarget(int32_t format) {
    return korvane::has_pixel_format(format) ? GL_TEXTURE_3D : GL_TEXTURE_2D;
}

GLint GPUImage3D::selectTextureFormat(int32_t format) {
    return korvane::texture_format(format);
}

void GPUImage3D::describe(int32_t width, int32_t height, int32_t depth, int32_t format) {
    m_Width = width;
    m_Height = height;
    m_Depth = depth;
    m_Format = format;
    m_TextureTarget = selectTextureTarget(format);
    m_TextureFormat = static_cast<GLuint>(selectTextureFormat(format));
}

void GPUImage3D::specify(void* pixels) {
    glBindTexture(m_TextureTarget, m_TextureID);
    GPUUtils::checkGLError("glBindTexture");
    if (pixels == nullptr) {
        glTexImage3D(m_TextureTarget, 0, static_cast<GLint>(m_TextureFormat), m_Width, m_Height, m_Depth, 0,
                     m_TextureFormat, GL_UNSIGNED_BYTE, nullptr);
        GPUUtils::checkGLError("glTexImage3D");
    } else {
        m_GPUPixelBuffer.uploadImage(this, pixels);
    }
    glTexParameterf(m_TextureTarget, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameterf(m_TextureTarget, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameterf(m_TextureTarget, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameterf(m_TextureTarget, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(m_TextureTarget, GL_TEXTURE_WRAP_R, GL_CLAMP_TO_EDGE);
    GPUUtils::checkGLError("glTexParameterf");
    glBindTexture(m_TextureTarget, 0);
    GPUUtils::checkGLError("glBindTexture");
}
