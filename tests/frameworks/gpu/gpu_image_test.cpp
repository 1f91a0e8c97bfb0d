// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_image_2d.h"

#include <GLES2/gl2ext.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <limits>

#include "frameworks/gpu/gpu_image_3d.h"
#include "tests/frameworks/gpu/gpu_fixture.h"
#include "tests/support/random_bytes.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kMaxInt = std::numeric_limits<int>::max();

struct Size {
    int width;
    int height;
};

constexpr Size kSizes[] = {{1, 1}, {3, 5}, {5, 3}, {7, 2}, {16, 9}, {67, 33}};

// What GL makes of pixels in memory.
Bytes expand(const Bytes& pixels, int format) {
    Bytes rgba;
    const auto step = static_cast<size_t>(format);
    for (size_t i = 0; i < pixels.size(); i += step) {
        const bool grey = format < 3;
        const unsigned char alpha = format % 2 == 0 ? pixels[i + step - 1] : 255;
        rgba.insert(rgba.end(), {pixels[i], pixels[i + (grey ? 0 : 1)], pixels[i + (grey ? 0 : 2)], alpha});
    }
    return rgba;
}

class GpuImage : public GpuTest {
  protected:
    // A program that copies texels one to one, so that no filtering blurs a comparison.
    auto_ptr<GPUProgram> make_fetcher(const std::string& sampler, const std::string& texel) {
        const std::string fragment =
            "#version 300 es\nprecision highp float;\nprecision highp sampler3D;\nuniform int slice;\nuniform " +
            sampler + " tex_sampler;\nout vec4 colour;\nvoid main() { colour = texelFetch(tex_sampler, " + texel +
            ", 0); }\n";
        return make_program("#version 300 es\nlayout(location = 0) in vec4 p;\nvoid main() { gl_Position = p; }\n",
                            fragment.c_str());
    }
};

TEST_F(GpuImage, EveryCallIsCheckedUnderItsName) {
    Bytes pixels = random_bytes(24, 1);
    m_Recorder.fail_every_call(GL_INVALID_ENUM);
    m_Recorder.take();
    const std::string into = "glBindTexture glBindBuffer glBufferData glMapBufferRange glUnmapBuffer ";
    const std::string after = "glBindBuffer glTexParameterf glBindTexture";
    {
        GPUImage2D image(context(), 3, 2, 4, pixels.data());
        EXPECT_EQ(m_Recorder.take_blamed(),
                  "glGenFramebuffers glGenBuffers glGenTextures " + into + "glTexImage " + after);
        image.set(3, 2, 3, pixels.data());
        EXPECT_EQ(m_Recorder.take_blamed(), into + "glPixelStorei glTexImage glPixelStorei " + after);
        image.set(3, 2, 2, nullptr);
        EXPECT_EQ(m_Recorder.take_blamed(), "glBindTexture glTexImage2D glTexParameterf glBindTexture");
        image.set(3, 2, 4, nullptr);
        m_Recorder.take();
        image.download(pixels.data(), 24);
        EXPECT_EQ(m_Recorder.take_blamed(),
                  "glFramebufferTexture2D glBindBuffer glBufferData glReadPixels glMapBufferRange glUnmapBuffer "
                  "glBindBuffer glBindFramebuffer");
        GPUFramebuffer::setFramebufferTarget(nullptr, nullptr);
        m_Recorder.take();
    }
    EXPECT_EQ(m_Recorder.take_blamed(), "glDeleteTextures glDeleteBuffers glDeleteFramebuffers");
    { const GPUImage3D volume(context(), 2, 3, 4, 1, pixels.data()); }
    EXPECT_EQ(m_Recorder.take_blamed(), "glGenBuffers glGenTextures " + into +
                                            "glPixelStorei glTexImage3D glPixelStorei " + after +
                                            " glDeleteTextures glDeleteBuffers");
}

TEST_F(GpuImage, TexturesAreFilteredAndEndAtTheirEdges) {
    const GPUImage2D image(context(), 3, 2, 4);
    const GPUImage3D volume(context(), 2, 3, 4, 1);
    glBindTexture(GL_TEXTURE_2D, image.getTextureID());
    glBindTexture(GL_TEXTURE_3D, volume.getTextureID());
    constexpr GLenum kSettings[] = {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER, GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T,
                                    GL_TEXTURE_WRAP_R};
    for (const GLenum name : kSettings) {
        GLint found2D = 0, found3D = 0;
        glGetTexParameteriv(GL_TEXTURE_2D, name, &found2D);
        glGetTexParameteriv(GL_TEXTURE_3D, name, &found3D);
        EXPECT_EQ(found3D,
                  name == GL_TEXTURE_MIN_FILTER || name == GL_TEXTURE_MAG_FILTER ? GL_LINEAR : GL_CLAMP_TO_EDGE);
        EXPECT_TRUE(found2D == found3D || name == GL_TEXTURE_WRAP_R) << name;
    }
}

TEST_F(GpuImage, EveryFormatGoesUpWholeAtAnySizeAndAlignment) {
    const auto_ptr<GPUProgram> program = make_fetcher("sampler2D", "ivec2(gl_FragCoord.xy)");
    // What has been called since the last time logs nothing, and sets the alignment only where rows lie otherwise.
    const auto sets_alignment = [&] {
        const std::vector<std::string> entries = m_Recorder.take();
        EXPECT_THAT(entries, testing::Not(Contains(testing::EndsWith("\n"))));
        return testing::Matches(Contains(testing::StartsWith("glPixelStorei")))(entries);
    };
    const auto setting = [](GLenum name) {
        GLint found = 0;
        glGetIntegerv(name, &found);
        return found;
    };
    GPUImage2D bystander(context(), 1, 1, 4, random_bytes(4, 1).data());
    const auto check = [&](const Size& size, int format, GLint alignment) {
        const auto& [width, height] = size;
        SCOPED_TRACE(testing::Message() << width << " x " << height << ", format " << format << " by " << alignment);
        Bytes pixels = random_bytes(static_cast<size_t>(width * height * format), 7);
        sets_alignment();
        GPUImage2D image(context(), width, height, format, pixels.data());
        EXPECT_EQ(sets_alignment(), width * format % alignment != 0);
        EXPECT_EQ(draw(*program, &image, width, height), expand(pixels, format));
        // Once more, into the texture that is there, whatever is bound just now and stays so.
        pixels = random_bytes(pixels.size(), 8);
        glBindTexture(GL_TEXTURE_2D, bystander.getTextureID());
        EXPECT_EQ(image.upload(pixels.data(), static_cast<int>(pixels.size())), 1);
        EXPECT_EQ(setting(GL_TEXTURE_BINDING_2D), static_cast<GLint>(bystander.getTextureID()));
        EXPECT_EQ(draw(*program, &image, width, height), expand(pixels, format));
        if (format == 4) {
            sets_alignment();
            EXPECT_EQ(download(image), pixels);
            EXPECT_EQ(sets_alignment(), width * 4 % alignment != 0);
        }
    };
    for (const GLint alignment : {1, 2, 4, 8}) {
        glPixelStorei(GL_UNPACK_ALIGNMENT, alignment);
        glPixelStorei(GL_PACK_ALIGNMENT, alignment);
        for (const Size& size : kSizes) {
            for (int format = 1; format <= 4; ++format) {
                check(size, format, alignment);
            }
        }
        EXPECT_EQ(setting(GL_UNPACK_ALIGNMENT), alignment);
        EXPECT_EQ(setting(GL_PACK_ALIGNMENT), alignment);
    }
    EXPECT_EQ(download(bystander), random_bytes(4, 1));
    EXPECT_THAT(m_Recorder.take_log(), IsEmpty());
}

TEST_F(GpuImage, EveryFormatFillsAVolumeSliceBySlice) {
    const auto_ptr<GPUProgram> program = make_fetcher("sampler3D", "ivec3(gl_FragCoord.xy, slice)");
    constexpr int kDepth = 3;
    for (const auto& [width, height] : kSizes) {
        for (int format = 1; format <= 4; ++format) {
            SCOPED_TRACE(testing::Message() << width << " x " << height << " format " << format);
            Bytes pixels = random_bytes(static_cast<size_t>(width * height * format * kDepth), 9);
            GPUImage3D volume(context(), width, height, kDepth, format, pixels.data());
            Bytes drawn;
            for (int slice = 0; slice < kDepth; ++slice) {
                program->beganCompute();
                program->_SetHostValue1iv("slice", 1, &slice);
                std::ranges::copy(draw(*program, &volume, width, height), std::back_inserter(drawn));
            }
            EXPECT_EQ(drawn, expand(pixels, format));
        }
    }
    EXPECT_THAT(m_Recorder.take_log(), IsEmpty());
}

TEST_F(GpuImage, TransfersAreRefusedWithoutMemoryForAllPixels) {
    GPUImage2D image(context(), 3, 2, 4, random_bytes(24, 3).data());
    Bytes buffer(24, 0xEE);
    m_Recorder.take();
    for (const int size : {23, 0, -1, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(image.upload(buffer.data(), size), 0);
        EXPECT_EQ(image.download(buffer.data(), size), 0);
    }
    EXPECT_EQ(image.upload(nullptr, kMaxInt), 0);
    EXPECT_EQ(image.download(nullptr, kMaxInt), 0);
    GPUImage2D huge(context(), 0, kMaxInt, kMaxInt, 4, false, false);
    EXPECT_EQ(huge.upload(buffer.data(), kMaxInt), 0);
    EXPECT_EQ(huge.download(buffer.data(), kMaxInt), 0);
    GPUPixelBuffer transfer(context());
    transfer.uploadImage(static_cast<GPUImage2D*>(nullptr), buffer.data());
    transfer.uploadImage(static_cast<GPUImage3D*>(nullptr), buffer.data());
    transfer.downloadImage(nullptr, buffer.data());
    transfer.downloadImage(&image, nullptr);
    EXPECT_THAT(m_Recorder.take_calls(),
                ElementsAre("glGenFramebuffers(1, ptr)", "glGenBuffers(1, ptr)", "glGenBuffers(1, ptr)"));
    EXPECT_EQ(buffer, Bytes(24, 0xEE));
    EXPECT_EQ(download(image), random_bytes(24, 3));
}

TEST_F(GpuImage, SizesAndCodesThatGlRefusesAreLoggedAndTouchNothing) {
    unsigned char pixel[4] = {};
    const GPUImage2D negative(context(), -2, -3, 4, pixel);
    const GPUImage2D huge(context(), kMaxInt, kMaxInt, 4, pixel);
    const GPUImage3D hugeVolume(context(), kMaxInt, kMaxInt, kMaxInt, 4, pixel);
    EXPECT_THAT(m_Recorder.take_log(), Contains("after :glTexImage() glError (0x501)\n"));
    // Only RGBA reads back.
    GPUImage2D rgb(context(), 1, 1, 3, pixel);
    m_Recorder.take();
    EXPECT_EQ(rgb.download(pixel, 3), 1);
    EXPECT_THAT(m_Recorder.take_log(), ElementsAre("after :glReadPixels() glError (0x502)\n"));

    const struct {
        int code;
        GLenum target2D, target3D;
        GLint format;
    } rows[] = {{std::numeric_limits<int>::min(), GL_TEXTURE_2D, GL_TEXTURE_2D, 0},
                {0, GL_TEXTURE_2D, GL_TEXTURE_2D, 0},
                {1, GL_TEXTURE_2D, GL_TEXTURE_3D, GL_LUMINANCE},
                {4, GL_TEXTURE_2D, GL_TEXTURE_3D, GL_RGBA},
                {5, GL_TEXTURE_EXTERNAL_OES, GL_TEXTURE_2D, 0},
                {6, GL_TEXTURE_2D, GL_TEXTURE_2D, 0}};
    GPUImage2D image(context(), 1, 1, 4);
    GPUImage3D volume(context(), 1, 1, 1, 4);
    for (const auto& row : rows) {
        EXPECT_EQ(image.selectTextureTarget(row.code), row.target2D);
        EXPECT_EQ(volume.selectTextureTarget(row.code), row.target3D);
        EXPECT_EQ(image.selectTextureFormat(row.code), row.format);
        EXPECT_EQ(volume.selectTextureFormat(row.code), row.format);
        m_Recorder.take();
        image.set(1, 1, row.code, nullptr);
        EXPECT_EQ(m_Recorder.take_log().empty(), row.format != 0);
        EXPECT_EQ(image.getTextureTarget(), row.target2D);
    }
}

TEST_F(GpuImage, WrappedTexturesSurviveUnlessHandedOver) {
    GLuint name = 0;
    glGenTextures(1, &name);
    m_Recorder.take();
    {
        GPUImage2D plain(context(), name, 4, 4, 4, false, false);
        const GPUImage3D volume(context(), name, 4, 4, 4, 4, false, false);
        EXPECT_THAT(m_Recorder.take_calls(),
                    ElementsAre("glGenFramebuffers(1, ptr)", "glGenBuffers(1, ptr)", "glGenBuffers(1, ptr)"));
        plain.recycle();
        EXPECT_EQ(plain.getTextureID(), name);
        const GPUImage2D initialised(context(), name, 2, 1, 4, true, false);
        EXPECT_THAT(m_Recorder.take_calls(),
                    Contains("glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, null)"));
    }
    EXPECT_TRUE(glIsTexture(name));
    {
        auto_ptr<GPUContext> counted(context());
        GPUImage2D owner(counted, name, 2, 1, 4, false, true);
        owner.recycle();
        EXPECT_EQ(owner.getTextureID(), 0U);
        EXPECT_FALSE(glIsTexture(name));
    }
    EXPECT_THAT(m_Recorder.take_calls(), Contains("glDeleteTextures(1, ptr)").Times(1));
}

}  // namespace
