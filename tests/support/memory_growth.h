// SPDX-License-Identifier: Apache-2.0
// What work leaves allocated, to be held against what the graphics driver leaves by itself.
#ifndef KORVANE_TESTS_SUPPORT_MEMORY_GROWTH_H_
#define KORVANE_TESTS_SUPPORT_MEMORY_GROWTH_H_

#include <EGL/egl.h>
#include <GLES3/gl3.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>

// Bytes that `calls` calls of `work` leave, once a third as many have gone before.
template <typename Work>
size_t grown_bytes(size_t calls, const Work& work) {
    const auto repeat = [&](size_t count) {
        for (size_t i = 0; i < count; ++i) {
            work();
        }
        return static_cast<size_t>(mallinfo2().uordblks);
    };
    const size_t before = repeat(calls / 3);
    return std::max(repeat(calls), before) - before;
}

// Compiled, linked and drawn with; the names go with the context.
inline void draw_plainly() {
    const char* const sources[] = {"attribute vec4 p; void main() { gl_Position = p; }",
                                   "void main() { gl_FragColor = vec4(1); }"};
    const GLuint program = glCreateProgram();
    for (size_t i = 0; i < 2; ++i) {
        const GLuint shader = glCreateShader(i == 0 ? GL_VERTEX_SHADER : GL_FRAGMENT_SHADER);
        glShaderSource(shader, 1, &sources[i], nullptr);
        glCompileShader(shader);
        glAttachShader(program, shader);
    }
    glLinkProgram(program);
    glUseProgram(program);
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 32, 24, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    GLuint framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    constexpr GLfloat kCorners[8] = {-1, -1, 1, -1, -1, 1, 1, 1};
    glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, kCorners);
    glEnableVertexAttribArray(0);
    glViewport(0, 0, 32, 24);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    glFinish();
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

// A context like a filter's, made, drawn in and destroyed without the library. Mesa keeps 640 bytes of it while the
// display stays open: the surface has no pixels, the X server makes no pixmap of that size, and what it answers to each
// later question about the surface is not freed. Less stays when the display is closed in between.
inline void use_plain_context() {
    EGLDisplay const display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
    const EGLint wanted[] = {EGL_SURFACE_TYPE,
                             EGL_WINDOW_BIT | EGL_PBUFFER_BIT,
                             EGL_RENDERABLE_TYPE,
                             EGL_OPENGL_ES2_BIT,
                             EGL_RED_SIZE,
                             8,
                             EGL_ALPHA_SIZE,
                             8,
                             EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    eglChooseConfig(display, wanted, &config, 1, &count);
    const EGLint size[] = {EGL_WIDTH, 0, EGL_HEIGHT, 0, EGL_NONE};
    EGLSurface const surface = eglCreatePbufferSurface(display, config, size);
    const EGLint version[] = {EGL_CONTEXT_CLIENT_VERSION, 3, EGL_NONE};
    EGLContext const context = eglCreateContext(display, config, EGL_NO_CONTEXT, version);
    EGLint answer = 0;
    eglQuerySurface(display, surface, EGL_WIDTH, &answer);
    eglQuerySurface(display, surface, EGL_HEIGHT, &answer);
    ASSERT_EQ(eglMakeCurrent(display, surface, surface, context), static_cast<EGLBoolean>(EGL_TRUE));
    draw_plainly();
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroySurface(display, surface);
    eglDestroyContext(display, context);
}

#endif  // KORVANE_TESTS_SUPPORT_MEMORY_GROWTH_H_
