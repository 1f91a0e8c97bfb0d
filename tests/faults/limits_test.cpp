// SPDX-License-Identifier: Apache-2.0
// Sizes at which a product leaves 31 or 32 bits, and pictures that are one pixel wide or high. Sources are pages that
// nobody wrote to, which take no memory.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdio>
#include <functional>
#include <vector>

#include "algorithms/alpha_blend.h"
#include "algorithms/fast_detection.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/stack_blur.h"
#include "applications/super_capture/merge_kernels.h"
#include "frameworks/images/color_convert.h"
#include "frameworks/images/image.h"
#include "frameworks/images/jpeg_decoder.h"
#include "frameworks/images/jpeg_encoder.h"
#include "frameworks/io/file_stream.h"
#include "tests/support/random_bytes.h"

namespace {

using Bytes = std::vector<unsigned char>;

class LargeBytes {
  public:
    explicit LargeBytes(size_t count) : m_Count(count) {
        m_Bytes = mmap(nullptr, count, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        EXPECT_NE(m_Bytes, MAP_FAILED);
    }
    ~LargeBytes() { munmap(m_Bytes, m_Count); }
    LargeBytes(const LargeBytes&) = delete;
    LargeBytes& operator=(const LargeBytes&) = delete;

    unsigned char* data() const { return static_cast<unsigned char*>(m_Bytes); }
    unsigned char& last(size_t fromEnd) const { return data()[m_Count - fromEnd]; }

  private:
    void* m_Bytes;
    size_t m_Count;
};

TEST(Limits, BytesBeyondTwoGiBAreSeen) {
    {
        const LargeBytes plane((size_t{1} << 32) + 5);
        plane.last(1) = 7;
        EXPECT_EQ(korvane::luma_sum(plane.data(), (size_t{1} << 32) + 5), 7U);
    }
    {
        // A bright point has a circle that is darker all round.
        constexpr int kWidth = 65536;
        constexpr int kHeight = 36000;
        const LargeBytes gray(size_t{kWidth} * kHeight);
        gray.last(size_t{10} * kWidth + 20) = 255;
        const FastParams params = {50, 1, 2, 0, 3, 3};
        std::vector<KeyPoint> corners;
        fast16(gray.data(), corners, kWidth, kHeight, &params);
        ASSERT_EQ(corners.size(), 1U);
        EXPECT_EQ(corners[0].x, kWidth - 20);
        EXPECT_EQ(corners[0].y, kHeight - 11);
    }
    {
        constexpr int kWidth = 32768;
        constexpr int kHeight = 21846;
        const LargeBytes rgb(size_t{kWidth} * kHeight * 3);
        const LargeBytes gray(size_t{kWidth} * kHeight);
        rgb.last(1) = rgb.last(2) = rgb.last(3) = 255;
        ASSERT_EQ(color_convert_rgb2gray(rgb.data(), gray.data(), kWidth, kHeight), 1);
        EXPECT_GE(gray.last(1), 254);
        EXPECT_EQ(gray.last(2), 0);
    }
    {
        constexpr int kPixels = (1 << 29) + 3;
        const LargeBytes pixels(size_t{kPixels} * 4);
        alpha_blend(pixels.data(), kPixels, 200, 100, 50, 256);
        EXPECT_EQ(pixels.last(4), 200);
        EXPECT_EQ(pixels.last(1), 0);
    }
}

// A column blurs as a row does.
TEST(Limits, ColumnsAndRowsOfOnePixel) {
    constexpr int kLength = 1 << 20;
    const std::function<void(Bytes&, Bytes&, int, int)> blurs[] = {
        [](Bytes& from, Bytes& to, int w, int h) {
            stack_blur(from.data(), w, h, 254);
            to = from;
        },
        [](Bytes& from, Bytes& to, int w, int h) { box_blur(from.data(), to.data(), w, h, 40); },
        [](Bytes& from, Bytes& to, int w, int h) { gauss_blur(from.data(), to.data(), w, h, 9); },
    };
    for (const auto& blur : blurs) {
        Bytes results[2];
        for (const bool isColumn : {false, true}) {
            Bytes source = random_bytes(size_t{kLength} * 4, 1);
            Bytes& result = results[isColumn ? 1 : 0];
            result.resize(source.size());
            blur(source, result, isColumn ? 1 : kLength, isColumn ? kLength : 1);
        }
        EXPECT_TRUE(results[0] == results[1]) << &blur - blurs;
    }
}

// A written file, read back: 0 when either fails, else the bytes of the picture.
size_t written_and_read(unsigned int width, unsigned int height) {
    const std::string path = testing::TempDir() + "korvane_limits.jpg";
    auto_ptr<Image> image(new Image(width, height, 1, IMAGE_FORMAT_TYPE_GRAY, nullptr));
    size_t bytes = 0;
    auto_ptr<Stream> out(new FileStream(path.c_str(), FileStream::FILE_MODE_ONLY_WRITE));
    if (JpegEncoder().encode(out, image, 50)) {
        out->close();
        auto_ptr<Stream> in(new FileStream(path.c_str(), FileStream::FILE_MODE_ONLY_READ));
        auto_ptr<Image> read(new Image(0, 0, 1, IMAGE_FORMAT_TYPE_NONE, nullptr));
        bytes = JpegDecoder().decode(in, read) ? size_t{read->getWidth()} * read->getHeight() : 0;
    }
    std::remove(path.c_str());
    return bytes;
}

TEST(Limits, JpegSides) {
    constexpr unsigned int kMost = 65500;
    EXPECT_EQ(written_and_read(kMost, 1), kMost);
    EXPECT_EQ(written_and_read(1, kMost), kMost);
    EXPECT_EQ(written_and_read(kMost, 400), size_t{kMost} * 400);
    EXPECT_EQ(written_and_read(kMost + 1, 1), 0U);
    EXPECT_EQ(written_and_read(1, kMost + 1), 0U);
}

TEST(Limits, ImagesWhoseBytesFitNo32BitsHaveNoPlane) {
    for (const unsigned int width : {65536U, 0x80000000U, 0xFFFFFFFFU}) {
        const Image image(width, 65536, 1, IMAGE_FORMAT_TYPE_RGBA, nullptr);
        EXPECT_EQ(const_cast<Image&>(image).getPlanes()[0], nullptr) << width;
    }
}

}  // namespace
