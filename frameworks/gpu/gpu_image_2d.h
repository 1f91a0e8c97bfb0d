// SPDX-License-Identifier: Apache-2.0
// GPUImage2D: a texture that is filled from memory and read back, or a wrapper of a texture that the caller owns.
//
// The format code is the number of bytes a pixel in every size computation:
//
//   code   pixels              texture target            GL format
//   1      grey                GL_TEXTURE_2D             GL_LUMINANCE
//   2      grey, alpha         GL_TEXTURE_2D             GL_LUMINANCE_ALPHA
//   3      R, G, B             GL_TEXTURE_2D             GL_RGB
//   4      R, G, B, A          GL_TEXTURE_2D             GL_RGBA
//   5      none (camera)       GL_TEXTURE_EXTERNAL_OES   0
//   other  none                GL_TEXTURE_2D             0
//
// Rows are tightly packed; row 0 is the texture's row 0. External images must be wrapped without initialising them: GL
// refuses to specify one. Only code 4 reads back whole. GL failures are log lines. Made, used and destroyed on the
// thread where the context is current. upload() and download() of one image lock each other out.
#ifndef KORVANE_FRAMEWORKS_GPU_GPU_IMAGE_2D_H_
#define KORVANE_FRAMEWORKS_GPU_GPU_IMAGE_2D_H_

#include <GLES3/gl3.h>

#include <cstdint>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/gpu/gpu_context.h"
#include "frameworks/gpu/gpu_framebuffer.h"
#include "frameworks/gpu/gpu_pixel_buffer.h"
#include "frameworks/utils/mutex.h"

class KORVANE_API GPUImage2D : public RefBase {
  public:
    // A new texture with undefined contents.
    GPUImage2D(GPUContext* context, int32_t width, int32_t height, int32_t format);
    GPUImage2D(auto_ptr<GPUContext>& context, int32_t width, int32_t height, int32_t format);

    // Wraps the texture named `texture`. `initialise` gives it new storage and the usual sampling parameters; without
    // it no GL call is made. `maintainBySelf` hands the name over, to be deleted with the image.
    GPUImage2D(GPUContext* context, GLuint texture, int32_t width, int32_t height, int32_t format, bool initialise,
               bool maintainBySelf);
    GPUImage2D(auto_ptr<GPUContext>& context, GLuint texture, int32_t width, int32_t height, int32_t format,
               bool initialise, bool maintainBySelf);

    // A new texture filled from width x height x format bytes; with null pixels its contents are undefined.
    GPUImage2D(GPUContext* context, int32_t width, int32_t height, int32_t format, void* pixels);
    GPUImage2D(auto_ptr<GPUContext>& context, int32_t width, int32_t height, int32_t format, void* pixels);

    // Deletes the texture as recycle() does.
    ~GPUImage2D() override;

    GPUImage2D(const GPUImage2D&) = delete;
    GPUImage2D& operator=(const GPUImage2D&) = delete;

    // Gives the texture a new size, format and contents. Its name stays. Null pixels leave the contents undefined.
    void set(int32_t width, int32_t height, int32_t format, void* pixels);

    // Replaces the contents from `pixels`, of which `size` bytes may be read. 0, with nothing done, for null pixels or
    // fewer bytes than width x height x format; else 1. The texture binding that was found is put back.
    int upload(void* pixels, int size);

    // Reads the contents back into `buffer`, of which `size` bytes may be written; results as of upload(), and 0 when
    // the driver gave no framebuffer to read through. Afterwards framebuffer 0 is bound.
    int download(void* buffer, int size);

    // Deletes the texture if it is this image's own.
    void recycle();

    GLenum selectTextureTarget(int32_t format);
    GLint selectTextureFormat(int32_t format);

    int32_t getWidth() const { return m_Width; }
    int32_t getHeight() const { return m_Height; }
    int32_t getFormat() const { return m_Format; }
    GLuint getTextureID() const { return m_TextureID; }
    GLuint getTextureTarget() const { return m_TextureTarget; }
    GLuint getTextureFormat() const { return m_TextureFormat; }

  private:
    KORVANE_HIDDEN void describe(int32_t width, int32_t height, int32_t format);
    KORVANE_HIDDEN void specify(void* pixels);
    KORVANE_HIDDEN bool holds_pixels(int size) const;

    auto_ptr<GPUContext> m_GPUContext;
    GPUFramebuffer m_GPUFramebuffer;
    GPUPixelBuffer m_GPUPixelBuffer;
    int32_t m_Width = 0;
    int32_t m_Height = 0;
    int32_t m_Format = 0;
    GLuint m_TextureID = 0;
    GLuint m_TextureTarget = 0;
    GLuint m_TextureFormat = 0;
    bool m_TextureMaintainBySelf = true;
    Mutex m_MutexLocked;
};

#endif  // KORVANE_FRAMEWORKS_GPU_GPU_IMAGE_2D_H_
