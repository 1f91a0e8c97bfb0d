// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_pixel_buffer.h"

#include "frameworks/core/memory.h"
#include "frameworks/gpu/gpu_image_2d.h"
#include "frameworks/gpu/gpu_image_3d.h"
#include "frameworks/gpu/gpu_texture_layout.h"
#include "frameworks/gpu/gpu_utils.h"

namespace {

constexpr int32_t kReadBackBytesPerPixel = 4;

// Rows are packed in memory, but GL begins each row at a multiple of its alignment setting, which may be 1, 2, 4 or 8.
// Where that makes a difference, the setting is 1 for one transfer, and then what it was.
class PackedRows {
  public:
    // `setting` is GL_UNPACK_ALIGNMENT or GL_PACK_ALIGNMENT.
    PackedRows(GLenum setting, size_t rowBytes) : m_Setting(setting) {
        if (rowBytes % kLargestAlignment == 0) {
            return;
        }
        GLint found = 1;
        glGetIntegerv(setting, &found);
        if (rowBytes % static_cast<size_t>(found) != 0) {
            m_Found = found;
            set(1);
        }
    }

    ~PackedRows() {
        if (m_Found != kUnchanged) {
            set(m_Found);
        }
    }

    PackedRows(const PackedRows&) = delete;
    PackedRows& operator=(const PackedRows&) = delete;

  private:
    static constexpr size_t kLargestAlignment = 8;
    static constexpr GLint kUnchanged = 0;

    void set(GLint alignment) const {
        glPixelStorei(m_Setting, alignment);
        GPUUtils::checkGLError("glPixelStorei");
    }

    GLenum m_Setting;
    GLint m_Found = kUnchanged;
};

void bind(GLenum target, GLuint buffer) {
    glBindBuffer(target, buffer);
    GPUUtils::checkGLError("glBindBuffer");
}

void renew_store(GLenum target, size_t bytes, GLenum usage) {
    glBufferData(target, static_cast<GLsizeiptr>(bytes), nullptr, usage);
    GPUUtils::checkGLError("glBufferData");
}

// Null when the driver refuses, which is logged. Copying and unmapping do nothing then.
void* map(GLenum target, size_t bytes, GLbitfield access) {
    void* mapping = glMapBufferRange(target, 0, static_cast<GLsizeiptr>(bytes), access);
    GPUUtils::checkGLError("glMapBufferRange");
    return mapping;
}

void unmap(GLenum target) {
    glUnmapBuffer(target);
    GPUUtils::checkGLError("glUnmapBuffer");
}

void fill_store(GLuint buffer, const void* pixels, size_t bytes) {
    bind(GL_PIXEL_UNPACK_BUFFER, buffer);
    renew_store(GL_PIXEL_UNPACK_BUFFER, bytes, GL_STREAM_DRAW);
    galloc_memcpy(map(GL_PIXEL_UNPACK_BUFFER, bytes, GL_MAP_WRITE_BIT), pixels, bytes);
    unmap(GL_PIXEL_UNPACK_BUFFER);
}

}  // namespace

GPUPixelBuffer::GPUPixelBuffer(GPUContext* context) : m_GPUContext(context) {
    glGenBuffers(1, &m_PixelBufferHandle);
    GPUUtils::checkGLError("glGenBuffers");
}

GPUPixelBuffer::GPUPixelBuffer(auto_ptr<GPUContext>& context) : GPUPixelBuffer(context.get()) {}

GPUPixelBuffer::~GPUPixelBuffer() {
    release();
}

void GPUPixelBuffer::uploadImage(GPUImage2D* image, void* pixels) {
    if (image == nullptr) {
        return;
    }
    const int32_t width = image->getWidth();
    const int32_t height = image->getHeight();
    const GLuint format = image->getTextureFormat();
    fill_store(m_PixelBufferHandle, pixels, korvane::texture_bytes({width, height, image->getFormat()}));
    {
        const PackedRows rows(GL_UNPACK_ALIGNMENT, korvane::texture_bytes({width, image->getFormat()}));
        glTexImage2D(image->getTextureTarget(), 0, static_cast<GLint>(format), width, height, 0, format,
                     GL_UNSIGNED_BYTE, nullptr);
        GPUUtils::checkGLError("glTexImage");
    }
    bind(GL_PIXEL_UNPACK_BUFFER, 0);
}

void GPUPixelBuffer::uploadImage(auto_ptr<GPUImage2D>& image, void* pixels) {
    uploadImage(image.get(), pixels);
}

void GPUPixelBuffer::uploadImage(GPUImage3D* image, void* pixels) {
    if (image == nullptr) {
        return;
    }
    const int32_t width = image->getWidth();
    const int32_t height = image->getHeight();
    const int32_t depth = image->getDepth();
    const GLuint format = image->getTextureFormat();
    fill_store(m_PixelBufferHandle, pixels, korvane::texture_bytes({width, height, depth, image->getFormat()}));
    {
        const PackedRows rows(GL_UNPACK_ALIGNMENT, korvane::texture_bytes({width, image->getFormat()}));
        glTexImage3D(image->getTextureTarget(), 0, static_cast<GLint>(format), width, height, depth, 0, format,
                     GL_UNSIGNED_BYTE, nullptr);
        GPUUtils::checkGLError("glTexImage3D");
    }
    bind(GL_PIXEL_UNPACK_BUFFER, 0);
}

void GPUPixelBuffer::uploadImage(auto_ptr<GPUImage3D>& image, void* pixels) {
    uploadImage(image.get(), pixels);
}

void GPUPixelBuffer::downloadImage(GPUImage2D* image, void* buffer) {
    if (image == nullptr || buffer == nullptr) {
        return;
    }
    const int32_t width = image->getWidth();
    const int32_t height = image->getHeight();
    const size_t bytes = korvane::texture_bytes({width, height, image->getFormat()});
    bind(GL_PIXEL_PACK_BUFFER, m_PixelBufferHandle);
    renew_store(GL_PIXEL_PACK_BUFFER, bytes, GL_STREAM_READ);
    {
        const PackedRows rows(GL_PACK_ALIGNMENT, korvane::texture_bytes({width, kReadBackBytesPerPixel}));
        glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        GPUUtils::checkGLError("glReadPixels");
    }
    galloc_memcpy(buffer, map(GL_PIXEL_PACK_BUFFER, bytes, GL_MAP_READ_BIT), bytes);
    unmap(GL_PIXEL_PACK_BUFFER);
    bind(GL_PIXEL_PACK_BUFFER, 0);
}

void GPUPixelBuffer::downloadImage(auto_ptr<GPUImage2D>& image, void* buffer) {
    downloadImage(image.get(), buffer);
}

void GPUPixelBuffer::release() {
    if (m_PixelBufferHandle == 0) {
        return;
    }
    glDeleteBuffers(1, &m_PixelBufferHandle);
    GPUUtils::checkGLError("glDeleteBuffers");
    m_PixelBufferHandle = 0;
}
