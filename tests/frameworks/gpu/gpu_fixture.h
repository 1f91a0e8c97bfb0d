// SPDX-License-Identifier: Apache-2.0
// An off-screen engine, current on the test's thread, and drawing as plainly as can be. No context, no test: the suite
// fails where none can be had.
#ifndef KORVANE_TESTS_FRAMEWORKS_GPU_GPU_FIXTURE_H_
#define KORVANE_TESTS_FRAMEWORKS_GPU_GPU_FIXTURE_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frameworks/gpu/gpu_engine.h"
#include "frameworks/gpu/gpu_image_2d.h"
#include "frameworks/gpu/gpu_program.h"
#include "frameworks/gpu/gpu_script.h"
#include "tests/support/gl_recorder.h"

using Bytes = std::vector<unsigned char>;

constexpr const char* kVertexShader =
    "attribute vec4 a_position;\n"
    "attribute vec2 a_texcoord;\n"
    "varying vec2 v_texcoord;\n"
    "void main() {\n"
    "  gl_Position = a_position;\n"
    "  v_texcoord = a_texcoord;\n"
    "}\n";

constexpr const char* kCopyShader =
    "precision highp float;\n"
    "uniform sampler2D tex_sampler;\n"
    "varying vec2 v_texcoord;\n"
    "void main() { gl_FragColor = texture2D(tex_sampler, v_texcoord); }\n";

class GpuTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(m_Engine->setup()) << "no EGL context: is there a display?";
        m_Engine->startup();
        ASSERT_NE(eglGetCurrentContext(), EGL_NO_CONTEXT);
    }
    void TearDown() override {
        for (const auto& [maker, count] : GlRecorder::live_names()) {
            // Shaders live as long as their context.
            EXPECT_TRUE(maker == "glCreateShader" || maker.starts_with("egl")) << count << " names of " << maker;
        }
        m_Engine->close();
        m_Engine->destroy();
    }

    GPUContext* context() { return m_Engine->getGPUContext(); }

    // A program, or one with handle 0 and the reason in the log. The script has no cache file.
    auto_ptr<GPUProgram> make_program(const char* vertex, const char* fragment) {
        auto_ptr<GPUScript> script(new GPUScript(context(), nullptr));
        EXPECT_TRUE(script->addSource("VertexShader", vertex) && script->addSource("FragmentShader", fragment));
        return auto_ptr<GPUProgram>(new GPUProgram(context(), script.get()));
    }

    // What the program makes of the image in a target of the same size; default vertices, so turned upside down.
    template <typename Image>
    Bytes draw(GPUProgram& program, Image* image, int width, int height) {
        GPUImage2D target(context(), width, height, 4);
        EXPECT_EQ(program.beganCompute(), 1);
        program.setOutputTarget(&target);
        program.setOutputSize(0, 0, width, height);
        program.setSourceTarget("tex_sampler", 0, image);
        EXPECT_EQ(program.endCompute(), 1);
        return download(target);
    }

    static Bytes download(GPUImage2D& image) {
        Bytes pixels(static_cast<size_t>(image.getWidth()) * static_cast<size_t>(image.getHeight()) * 4);
        EXPECT_EQ(image.download(pixels.data(), static_cast<int>(pixels.size())), 1);
        return pixels;
    }

    auto_ptr<GPUEngine> m_Engine = new GPUEngine(nullptr, 0, 0);
    GlRecorder m_Recorder;
};

#endif  // KORVANE_TESTS_FRAMEWORKS_GPU_GPU_FIXTURE_H_
