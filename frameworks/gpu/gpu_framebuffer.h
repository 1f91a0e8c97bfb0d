// SPDX-License-Identifier: Apache-2.0
// GPUFramebuffer: one GL framebuffer, for drawing into several textures, reading and copying between attachments, and
// the shortcut to draw into one texture.
//
// Drawing: beginDraw(), setDrawTarget(i, image) for each wanted index, endDraw(), then draw. The framebuffer stays
// bound until endRead() or setFramebufferTarget(nullptr, nullptr). Copying: beginRead(), setReadTarget(i), Blit() into
// what is bound for drawing, endRead(); the read side uses the attachments that were made for drawing. Failures are log
// lines. Used on the thread where the context is current.
#ifndef KORVANE_FRAMEWORKS_GPU_GPU_FRAMEBUFFER_H_
#define KORVANE_FRAMEWORKS_GPU_GPU_FRAMEBUFFER_H_

#include <GLES3/gl3.h>

#include <cstddef>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/gpu/gpu_context.h"

class GPUImage2D;

class KORVANE_API GPUFramebuffer : public RefBase {
  public:
    explicit GPUFramebuffer(GPUContext* context);
    explicit GPUFramebuffer(auto_ptr<GPUContext>& context);

    // Deletes the framebuffer's name unless release() did.
    ~GPUFramebuffer() override;

    GPUFramebuffer(const GPUFramebuffer&) = delete;
    GPUFramebuffer& operator=(const GPUFramebuffer&) = delete;

    // Binds for drawing and forgets the targets.
    void beginDraw();

    // Attaches the image's texture, always as a 2D texture, at colour attachment `index`, 0 to 3. Other indices and a
    // null image are ignored.
    void setDrawTarget(int index, GPUImage2D* image);
    void setDrawTarget(int index, auto_ptr<GPUImage2D>& image);

    // Selects the targets set since beginDraw() for drawing, in ascending order and packed from the front. OpenGL ES
    // accepts only indices without a gap from 0 on. Without targets the earlier selection stays.
    void endDraw();

    // Binds for reading.
    void beginRead();

    // Chooses the colour attachment, 0 to 3, that is read; other indices are ignored.
    void setReadTarget(int index);

    // Copies a rectangle of the read framebuffer's colours into one of the draw framebuffer's, filtering linearly.
    void Blit(int srcX0, int srcY0, int srcX1, int srcY1, int dstX0, int dstY0, int dstX1, int dstY1);

    // Unbinds for reading and for drawing.
    void endRead();

    // Deletes the framebuffer's name.
    void release();

    // Binds `framebuffer` with the image's texture at colour attachment 0, or framebuffer 0 if either is null.
    static void setFramebufferTarget(GPUFramebuffer* framebuffer, GPUImage2D* image);
    static void setFramebufferTarget(auto_ptr<GPUFramebuffer>& framebuffer, auto_ptr<GPUImage2D>& image);

    // False when the driver gave no name. Binding then means framebuffer 0, the application's own surface.
    KORVANE_HIDDEN bool is_made() const { return m_FramebufferHandle != 0; }

  private:
    auto_ptr<GPUContext> m_GPUContext;
    int m_DrawBuffers[4] = {};  // one of each index at most
    size_t m_DrawBufferCount = 0;
    GLuint m_FramebufferHandle = 0;
};

#endif  // KORVANE_FRAMEWORKS_GPU_GPU_FRAMEBUFFER_H_
