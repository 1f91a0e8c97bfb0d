// SPDX-License-Identifier: Apache-2.0
// GPUImage3D: a 3D texture that is filled from memory (such as a colour lookup volume), or a wrapper of the caller's.
//
// Format codes and the layout are those of GPUImage2D, one slice after the other; the target is GL_TEXTURE_3D for codes
// 1 to 4, GL_TEXTURE_2D for all others, which GL refuses to specify with a depth. It does not read back. GL failures
// are log lines. Made, used and destroyed on the thread where the context is current.
#ifndef KORVANE_FRAMEWORKS_GPU_GPU_IMAGE_3D_H_
#define KORVANE_FRAMEWORKS_GPU_GPU_IMAGE_3D_H_

#include <GLES3/gl3.h>

#include <cstdint>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/gpu/gpu_context.h"
#include "frameworks/gpu/gpu_pixel_buffer.h"

class KORVANE_API GPUImage3D : public RefBase {
  public:
    // A new texture with undefined contents.
    GPUImage3D(GPUContext* context, int32_t width, int32_t height, int32_t depth, int32_t format);
    GPUImage3D(auto_ptr<GPUContext>& context, int32_t width, int32_t height, int32_t depth, int32_t format);

    // Wraps the texture named `texture`; `initialise` and `maintainBySelf` as in GPUImage2D.
    GPUImage3D(GPUContext* context, GLuint texture, int32_t width, int32_t height, int32_t depth, int32_t format,
               bool initialise, bool maintainBySelf);
    GPUImage3D(auto_ptr<GPUContext>& context, GLuint texture, int32_t width, int32_t height, int32_t depth,
               int32_t format, bool initialise, bool maintainBySelf);

    // A new texture filled from width x height x depth x format bytes; with null pixels its contents are undefined.
    GPUImage3D(GPUContext* context, int32_t width, int32_t height, int32_t depth, int32_t format, void* pixels);
    GPUImage3D(auto_ptr<GPUContext>& context, int32_t width, int32_t height, int32_t depth, int32_t format,
               void* pixels);

    // Deletes the texture as recycle() does.
    ~GPUImage3D() override;

    GPUImage3D(const GPUImage3D&) = delete;
    GPUImage3D& operator=(const GPUImage3D&) = delete;

    // Gives the texture a new size, format and contents. Its name stays. Null pixels leave the contents undefined.
    void set(int32_t width, int32_t height, int32_t depth, int32_t format, void* pixels);

    // Deletes the texture if it is this image's own.
    void recycle();

    GLenum selectTextureTarget(int32_t format);
    GLint selectTextureFormat(int32_t format);

    int32_t getWidth() const { return m_Width; }
    int32_t getHeight() const { return m_Height; }
    int32_t getDepth() const { return m_Depth; }
    int32_t getFormat() const { return m_Format; }
    GLuint getTextureID() const { return m_TextureID; }
    GLuint getTextureTarget() const { return m_TextureTarget; }
    GLuint getTextureFormat() const { return m_TextureFormat; }

  private:
    KORVANE_HIDDEN void describe(int32_t width, int32_t height, int32_t depth, int32_t format);
    KORVANE_HIDDEN void specify(void* pixels);

    auto_ptr<GPUContext> m_GPUContext;
    GPUPixelBuffer m_GPUPixelBuffer;
    int32_t m_Width = 0;
    int32_t m_Height = 0;
    int32_t m_Depth = 0;
    int32_t m_Format = 0;
    GLuint m_TextureID = 0;
    GLuint m_TextureTarget = 0;
    GLuint m_TextureFormat = 0;
    bool m_TextureMaintainBySelf = true;
};

#endif  // KORVANE_FRAMEWORKS_GPU_GPU_IMAGE_3D_H_
