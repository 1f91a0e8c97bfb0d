// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_framebuffer.h"

#include <algorithm>

#include "frameworks/gpu/gpu_image_2d.h"
#include "frameworks/gpu/gpu_utils.h"

namespace {

constexpr int kMaxAttachments = 4;

bool is_attachment(int index) {
    return index >= 0 && index < kMaxAttachments;
}

GLenum attachment(int index) {
    return GL_COLOR_ATTACHMENT0 + static_cast<GLenum>(index);
}

void attach(GLenum target, int index, const GPUImage2D& image) {
    glFramebufferTexture2D(target, attachment(index), GL_TEXTURE_2D, image.getTextureID(), 0);
    GPUUtils::checkGLError("glFramebufferTexture2D");
    GPUUtils::checkFramebufferStatusDetail("glFramebufferTexture2D");
}

}  // namespace

GPUFramebuffer::GPUFramebuffer(GPUContext* context) : m_GPUContext(context) {
    glGenFramebuffers(1, &m_FramebufferHandle);
    GPUUtils::checkGLError("glGenFramebuffers");
}

GPUFramebuffer::GPUFramebuffer(auto_ptr<GPUContext>& context) : GPUFramebuffer(context.get()) {}

GPUFramebuffer::~GPUFramebuffer() {
    release();
}

void GPUFramebuffer::beginDraw() {
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_FramebufferHandle);
    GPUUtils::checkGLError("glBindFramebuffer");
    m_DrawBufferCount = 0;
}

void GPUFramebuffer::setDrawTarget(int index, GPUImage2D* image) {
    if (image == nullptr || !is_attachment(index)) {
        return;
    }
    int* end = m_DrawBuffers + m_DrawBufferCount;
    if (std::find(m_DrawBuffers, end, index) == end) {
        m_DrawBuffers[m_DrawBufferCount++] = index;
    }
    attach(GL_DRAW_FRAMEBUFFER, index, *image);
}

void GPUFramebuffer::setDrawTarget(int index, auto_ptr<GPUImage2D>& image) {
    setDrawTarget(index, image.get());
}

void GPUFramebuffer::endDraw() {
    if (m_DrawBufferCount == 0) {
        return;
    }
    int* end = m_DrawBuffers + m_DrawBufferCount;
    std::sort(m_DrawBuffers, end);
    GLenum buffers[kMaxAttachments] = {};
    std::transform(m_DrawBuffers, end, buffers, attachment);
    glDrawBuffers(static_cast<GLsizei>(m_DrawBufferCount), buffers);
    GPUUtils::checkGLError("glDrawBuffers");
}

void GPUFramebuffer::beginRead() {
    glBindFramebuffer(GL_READ_FRAMEBUFFER, m_FramebufferHandle);
    GPUUtils::checkGLError("glBindFramebuffer");
}

void GPUFramebuffer::setReadTarget(int index) {
    if (!is_attachment(index)) {
        return;
    }
    glReadBuffer(attachment(index));
    GPUUtils::checkGLError("glReadBuffer");
}

void GPUFramebuffer::Blit(int srcX0, int srcY0, int srcX1, int srcY1, int dstX0, int dstY0, int dstX1, int dstY1) {
    glBlitFramebuffer(srcX0, srcY0, srcX1, srcY1, dstX0, dstY0, dstX1, dstY1, GL_COLOR_BUFFER_BIT, GL_LINEAR);
    GPUUtils::checkGLError("glBlitFramebuffer");
}

void GPUFramebuffer::endRead() {
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    GPUUtils::checkGLError("glBindFramebuffer");
}

void GPUFramebuffer::release() {
    m_DrawBufferCount = 0;
    if (m_FramebufferHandle == 0) {
        return;
    }
    glDeleteFramebuffers(1, &m_FramebufferHandle);
    GPUUtils::checkGLError("glDeleteFramebuffers");
    m_FramebufferHandle = 0;
}

void GPUFramebuffer::setFramebufferTarget(GPUFramebuffer* framebuffer, GPUImage2D* image) {
    if (framebuffer == nullptr || image == nullptr) {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        GPUUtils::checkGLError("glBindFramebuffer");
        return;
    }
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer->m_FramebufferHandle);
    attach(GL_FRAMEBUFFER, 0, *image);
}

void GPUFramebuffer::setFramebufferTarget(auto_ptr<GPUFramebuffer>& framebuffer, auto_ptr<GPUImage2D>& image) {
    setFramebufferTarget(framebuffer.get(), image.get());
}
