// SPDX-License-Identifier: Apache-2.0
// GPUPixelBuffer: the buffer object through which texture contents go up and come back.
//
// Each transfer gets a new store and one copy into or out of its mapping, so that the driver never waits for an earlier
// transfer. Pixels are tightly packed rows of width x format bytes; the caller's memory must hold all of them.
// Whatever pixel alignment the application has set, it holds again afterwards. Pixels for an upload are only read, also
// where their type is not const. GL failures are log lines. Used on the thread where the context is current.
#ifndef KORVANE_FRAMEWORKS_GPU_GPU_PIXEL_BUFFER_H_
#define KORVANE_FRAMEWORKS_GPU_GPU_PIXEL_BUFFER_H_

#include <GLES3/gl3.h>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/gpu/gpu_context.h"

class GPUImage2D;
class GPUImage3D;

class KORVANE_API GPUPixelBuffer : public RefBase {
  public:
    explicit GPUPixelBuffer(GPUContext* context);
    explicit GPUPixelBuffer(auto_ptr<GPUContext>& context);

    // Deletes the buffer's name unless release() did.
    ~GPUPixelBuffer() override;

    GPUPixelBuffer(const GPUPixelBuffer&) = delete;
    GPUPixelBuffer& operator=(const GPUPixelBuffer&) = delete;

    // Specifies the texture that is bound to the image's target from `pixels`, in the image's size and format. The
    // texture is not bound here. A null image does nothing; null pixels leave the contents undefined.
    void uploadImage(GPUImage2D* image, void* pixels);
    void uploadImage(auto_ptr<GPUImage2D>& image, void* pixels);
    void uploadImage(GPUImage3D* image, void* pixels);
    void uploadImage(auto_ptr<GPUImage3D>& image, void* pixels);

    // Reads as many pixels as the image has from the current read framebuffer, always as RGBA, and copies width x
    // height x format bytes to `buffer`. So only RGBA images come back: below 4 bytes a pixel GL rejects the read, and
    // the bytes are undefined. Nothing is done if either is null.
    void downloadImage(GPUImage2D* image, void* buffer);
    void downloadImage(auto_ptr<GPUImage2D>& image, void* buffer);

    // Deletes the buffer's name.
    void release();

  private:
    auto_ptr<GPUContext> m_GPUContext;
    GLuint m_PixelBufferHandle = 0;
};

#endif  // KORVANE_FRAMEWORKS_GPU_GPU_PIXEL_BUFFER_H_
