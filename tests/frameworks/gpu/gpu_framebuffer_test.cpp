// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_framebuffer.h"

#include <gmock/gmock.h>

#include <memory>

#include "tests/frameworks/gpu/gpu_fixture.h"

namespace {

using GpuFramebuffer = GpuTest;

TEST_F(GpuFramebuffer, EveryCallIsCheckedAndWhatIsOutOfRangeMakesNone) {
    GPUImage2D image(context(), 2, 2, 4);
    auto_ptr<GPUImage2D> none;
    m_Recorder.take();
    m_Recorder.fail_every_call(GL_INVALID_ENUM);
    {
        GPUFramebuffer framebuffer(context());
        framebuffer.beginDraw();
        framebuffer.setDrawTarget(4, &image);
        framebuffer.setDrawTarget(-1, &image);
        framebuffer.setDrawTarget(0, nullptr);
        framebuffer.setDrawTarget(0, none);
        framebuffer.endDraw();
        framebuffer.setDrawTarget(0, &image);
        framebuffer.endDraw();
        framebuffer.beginDraw();
        framebuffer.endDraw();
        framebuffer.beginRead();
        for (const int index : {4, -1, 3}) {
            framebuffer.setReadTarget(index);
        }
        framebuffer.Blit(1, 2, 3, 4, 5, 6, 7, 8);
        framebuffer.endRead();
        GPUFramebuffer::setFramebufferTarget(nullptr, &image);
        GPUFramebuffer::setFramebufferTarget(&framebuffer, nullptr);
        framebuffer.release();
    }
    EXPECT_EQ(m_Recorder.take_blamed(),
              "glGenFramebuffers glBindFramebuffer glFramebufferTexture2D glDrawBuffers glBindFramebuffer "
              "glBindFramebuffer glReadBuffer glBlitFramebuffer glBindFramebuffer glBindFramebuffer glBindFramebuffer "
              "glDeleteFramebuffers");

    m_Recorder.heal();
    m_Recorder.answer("glCheckFramebufferStatus", GL_FRAMEBUFFER_UNSUPPORTED);
    GPUFramebuffer(context()).setDrawTarget(0, &image);
    EXPECT_EQ(m_Recorder.take_log().back(), "Framebuffer: glFramebufferTexture2D is INCOMPLETE: unsupported, 8cdd\n");
}

TEST_F(GpuFramebuffer, DrawsFourTargetsAtOnceAndCopiesBetweenThem) {
    constexpr int kWidth = 5;
    constexpr int kHeight = 3;
    const auto_ptr<GPUProgram> program = make_program(
        "#version 300 es\nlayout(location = 0) in vec4 p;\nvoid main() { gl_Position = p; }\n",
        "#version 300 es\nprecision highp float;\nlayout(location = 0) out vec4 colors[4];\nvoid main() {\n"
        "  vec4 color = vec4(floor(gl_FragCoord.xy), 10.0, 255.0) / 255.0;\n"
        "  colors[0] = color;\n  colors[1] = color * vec4(1, 1, 2, 1);\n"
        "  colors[2] = color * vec4(1, 1, 3, 1);\n  colors[3] = color * vec4(1, 1, 4, 1);\n}\n");
    const auto at = [](const Bytes& pixels, int x, int y) {
        const auto begin = pixels.begin() + (y * kWidth + x) * 4;
        return Bytes(begin, begin + 3);
    };
    std::vector<std::unique_ptr<GPUImage2D>> images;
    GPUFramebuffer framebuffer(context());
    framebuffer.beginDraw();
    for (const int index : {3, 1, 0, 2, 1}) {
        images.push_back(std::make_unique<GPUImage2D>(context(), kWidth, kHeight, 4));
        framebuffer.setDrawTarget(index, images.back().get());
    }
    framebuffer.endDraw();
    ASSERT_EQ(program->beganCompute(), 1);
    program->setOutputSize(0, 0, kWidth, kHeight);
    EXPECT_EQ(program->endCompute(), 1);
    framebuffer.endRead();
    // The second image was replaced by the last.
    for (const auto& [image, tag] : {std::pair<size_t, unsigned char>{0, 40}, {2, 10}, {3, 30}, {4, 20}}) {
        const Bytes pixels = download(*images[image]);
        EXPECT_EQ(at(pixels, 0, 0), (Bytes{0, 0, tag}));
        EXPECT_EQ(at(pixels, 4, 1), (Bytes{4, 1, tag}));
    }

    // A rectangle of attachment 2, mirrored from left to right, into another image.
    GPUImage2D copy(context(), kWidth, kHeight, 4, Bytes(kWidth * kHeight * 4, 7).data());
    GPUFramebuffer destination(context());
    destination.beginDraw();
    destination.setDrawTarget(0, &copy);
    destination.endDraw();
    framebuffer.beginRead();
    framebuffer.setReadTarget(2);
    framebuffer.Blit(1, 0, 4, 2, 3, 1, 0, 3);
    framebuffer.endRead();
    const Bytes pixels = download(copy);
    EXPECT_EQ(at(pixels, 0, 1), (Bytes{3, 0, 30}));
    EXPECT_EQ(at(pixels, 2, 1), (Bytes{1, 0, 30}));
    EXPECT_EQ(at(pixels, 1, 2), (Bytes{2, 1, 30}));
    EXPECT_EQ(at(pixels, 3, 1), Bytes(3, 7));
    EXPECT_EQ(at(pixels, 0, 0), Bytes(3, 7));
    EXPECT_THAT(m_Recorder.take_log(), testing::IsEmpty());
}

}  // namespace
