// SPDX-License-Identifier: Apache-2.0
// What an application brings to the filters: a context of its own, current on this thread, and camera textures.
#ifndef KORVANE_TESTS_SUPPORT_GL_SURFACE_H_
#define KORVANE_TESTS_SUPPORT_GL_SURFACE_H_

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES3/gl3.h>
// Needs the types of the core header above.
#include <GLES2/gl2ext.h>
#include <gtest/gtest.h>

#include <vector>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/gpu/gpu_engine.h"

class GlSurface {
  public:
    GlSurface(int width, int height)
        : m_Width(width),
          m_Height(height),
          m_Engine(new GPUEngine(nullptr, static_cast<uint32_t>(width), static_cast<uint32_t>(height))) {
        EXPECT_TRUE(m_Engine->setup());
        m_Engine->startup();
    }
    ~GlSurface() {
        m_Engine->close();
        m_Engine->destroy();
    }
    GlSurface(const GlSurface&) = delete;
    GlSurface& operator=(const GlSurface&) = delete;

    std::vector<unsigned char> pixels() const {
        std::vector<unsigned char> bytes(static_cast<size_t>(m_Width) * static_cast<size_t>(m_Height) * 4);
        glReadPixels(0, 0, m_Width, m_Height, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
        return bytes;
    }

  private:
    int m_Width;
    int m_Height;
    auto_ptr<GPUEngine> m_Engine;
};

// A linearly filtered texture with RGBA pixels in it.
inline GLuint new_texture(int width, int height, const unsigned char* rgba) {
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glBindTexture(GL_TEXTURE_2D, 0);
    return texture;
}

// Puts the storage of a 2D texture of the current context behind an external one.
inline EGLImageKHR show_through(GLuint external, GLuint texture) {
    const auto create = reinterpret_cast<PFNEGLCREATEIMAGEKHRPROC>(eglGetProcAddress("eglCreateImageKHR"));
    const auto target =
        reinterpret_cast<PFNGLEGLIMAGETARGETTEXTURE2DOESPROC>(eglGetProcAddress("glEGLImageTargetTexture2DOES"));
    const EGLImageKHR image = create(eglGetCurrentDisplay(), eglGetCurrentContext(), EGL_GL_TEXTURE_2D_KHR,
                                     reinterpret_cast<EGLClientBuffer>(uintptr_t{texture}), nullptr);
    EXPECT_NE(image, EGL_NO_IMAGE_KHR);
    glBindTexture(GL_TEXTURE_EXTERNAL_OES, external);
    target(GL_TEXTURE_EXTERNAL_OES, image);
    glBindTexture(GL_TEXTURE_EXTERNAL_OES, 0);
    return image;
}

// An external texture over the storage of a 2D one of the current context, as a camera's frames are.
class ExternalTexture {
  public:
    explicit ExternalTexture(GLuint texture) {
        glGenTextures(1, &m_Texture);
        m_Image = show_through(m_Texture, texture);
        glBindTexture(GL_TEXTURE_EXTERNAL_OES, m_Texture);
        glTexParameteri(GL_TEXTURE_EXTERNAL_OES, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_EXTERNAL_OES, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glBindTexture(GL_TEXTURE_EXTERNAL_OES, 0);
    }
    // NOLINTNEXTLINE(bugprone-exception-escape): found where lint reads many sources; drivers throw nothing.
    ~ExternalTexture() {
        const auto destroy = reinterpret_cast<PFNEGLDESTROYIMAGEKHRPROC>(eglGetProcAddress("eglDestroyImageKHR"));
        glDeleteTextures(1, &m_Texture);
        destroy(eglGetCurrentDisplay(), m_Image);
    }
    ExternalTexture(const ExternalTexture&) = delete;
    ExternalTexture& operator=(const ExternalTexture&) = delete;

    GLuint name() const { return m_Texture; }

  private:
    EGLImageKHR m_Image = EGL_NO_IMAGE_KHR;
    GLuint m_Texture = 0;
};

#endif  // KORVANE_TESTS_SUPPORT_GL_SURFACE_H_
