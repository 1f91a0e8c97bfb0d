// SPDX-License-Identifier: Apache-2.0
// Prints "NAME <tab> HEAP BYTES <tab> STACK BYTES" of each effect and conversion on a picture of 12 megapixels. What
// the caller brings, pictures and results, is not counted, only what the library takes while a call runs; of a function
// that makes an object, that object as well.
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "algorithms/alpha_blend.h"
#include "algorithms/fast_blur.h"
#include "algorithms/fast_detection.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/gauss_blur_iir.h"
#include "algorithms/lbp.h"
#include "algorithms/stack_blur.h"
#include "applications/gif_maker/color_quantizer.h"
#include "applications/pano/panorama_module.h"
#include "applications/photo_timestamp/timestamp_watermark.h"
#include "applications/super_capture/super_capture.h"
#include "benchmarks/memory_use.h"
#include "benchmarks/support/picture.h"
#include "frameworks/images/color_convert.h"
#include "frameworks/images/jpeg_decoder.h"
#include "frameworks/images/jpeg_encoder.h"
#include "frameworks/io/memory_stream.h"

namespace {

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;
constexpr size_t kPixels = size_t{kWidth} * kHeight;

// Side by side and one below the other: drawing all of it would take longer than most effects.
std::vector<unsigned char> tiled_picture() {
    constexpr size_t kTiles = 4;
    constexpr size_t kTileRowBytes = kWidth / kTiles * 4;
    const std::vector<unsigned char> tile = korvane::bench::rgba_picture(kWidth / kTiles, kHeight / kTiles);
    std::vector<unsigned char> picture(4 * kPixels);
    for (size_t row = 0; row < kHeight; ++row) {
        for (size_t i = 0; i < kTiles; ++i) {
            std::memcpy(&picture[(row * kTiles + i) * kTileRowBytes], &tile[row % (kHeight / kTiles) * kTileRowBytes],
                        kTileRowBytes);
        }
    }
    return picture;
}

struct Buffers {
    std::vector<unsigned char> picture = tiled_picture();
    std::vector<unsigned char> first = std::vector<unsigned char>(4 * kPixels + 2);
    std::vector<unsigned char> second = std::vector<unsigned char>(8 * kPixels);

    unsigned* words() { return reinterpret_cast<unsigned*>(first.data()); }
    unsigned char* half() { return second.data() + kPixels; }
    unsigned char* threeQuarters() { return second.data() + 2 * kPixels; }
};

using Work = std::function<void(Buffers&)>;

struct Effect {
    std::string name;
    Work work;
    // Before it, uncounted.
    Work prepare;
};

// Streams of memory do not rewind by themselves, which the decoder asks for.
class RewindingStream : public MemoryStream {
  public:
    using MemoryStream::MemoryStream;
    bool rewind() override { return seek(0, SEEK_ORIGIN_BEGIN) == 0; }
};

std::vector<Effect> blurs() {
    const auto recursive = [](int depth) {
        return [depth](Buffers& b) { gaussiir(b.first.data(), kWidth, kHeight, depth, depth * kWidth, 10.0F, 10.0F); };
    };
    return {
        {"stack_blur", [](Buffers& b) { stack_blur(b.first.data(), kWidth, kHeight, 25); }, {}},
        {"fast_blur", [](Buffers& b) { fast_blur(b.words(), b.second.data(), kWidth, kHeight, 25); }, {}},
        {"gauss_blur", [](Buffers& b) { gauss_blur(b.first.data(), b.second.data(), kWidth, kHeight, 10); }, {}},
        {"gaussiir, RGBA", recursive(4), {}},
        {"gaussiir, RGB", recursive(3), {}},
        {"alpha_blend", [](Buffers& b) { alpha_blend(b.first.data(), static_cast<int>(kPixels), 16, 32, 48, 77); }, {}},
    };
}

void find_corners(Buffers& b) {
    const FastParams params = {20, 1, 8, 0, 3, 3};
    std::vector<KeyPoint> corners;
    fast16(b.first.data(), corners, kWidth, kHeight, &params);
}

void make_palette(Buffers& b) {
    ColorQuantizer quantizer;
    quantizer.prepare(kWidth, kHeight);
    for (size_t i = 0; i < 4 * kPixels; i += 4) {
        quantizer.addColor(b.picture[i], b.picture[i + 1], b.picture[i + 2]);
    }
    quantizer.getPalette(256);
}

std::vector<Effect> analyses() {
    // The dense vector of a whole picture takes 3 GB or more of the caller's memory: a part of it shows what the
    // function itself takes.
    constexpr unsigned kSlots = 1 << 20;
    return {
        {"fast16", find_corners, {}},
        {"lbp_pyr_features",
         [](Buffers& b) {
             lbp_pyr_features(reinterpret_cast<char*>(b.second.data()), kSlots, b.words(), kHeight, kWidth);
         },
         {}},
        {"lbp_pyr_features_sparse",
         [](Buffers& b) {
             lbp_pyr_features_sparse(reinterpret_cast<unsigned*>(b.second.data()),
                                     lbp_pyr_get_dim(kHeight, kWidth, 5) / 256, b.words(), kHeight, kWidth);
         },
         {}},
        {"ColorQuantizer, 256 colours", make_palette, {}},
    };
}

template <typename Function>
Effect packed(const char* name, Function function) {
    return {name, [function](Buffers& b) { function(b.first.data(), b.second.data(), kWidth, kHeight); }, {}};
}

template <typename Function>
Effect to_three(const char* name, Function function) {
    return {name,
            [function](Buffers& b) {
                function(b.first.data(), b.second.data(), b.half(), b.threeQuarters(), kWidth, kHeight);
            },
            {}};
}

template <typename Function>
Effect from_three(const char* name, Function function) {
    return {name,
            [function](Buffers& b) {
                unsigned char* source = b.second.data() + 4 * kPixels;
                function(source, source + kPixels, source + 2 * kPixels, b.second.data(), kWidth, kHeight);
            },
            {}};
}

template <typename Function>
Effect two_planes(const char* name, Function function) {
    return {name, [function](Buffers& b) { function(b.first.data(), b.second.data(), b.half(), kWidth, kHeight); }, {}};
}

template <typename Function>
Effect from_two(const char* name, Function function) {
    return {name,
            [function](Buffers& b) {
                function(b.first.data(), b.first.data() + kPixels, b.second.data(), kWidth, kHeight);
            },
            {}};
}

std::vector<Effect> conversions() {
#define KORVANE_ROW(shape, name) shape("color_convert_" #name, color_convert_##name)
    return {
        KORVANE_ROW(packed, gray2rgb),
        KORVANE_ROW(packed, gray2rgba),
        KORVANE_ROW(packed, rgb2gray),
        KORVANE_ROW(packed, rgba2gray),
        KORVANE_ROW(packed, rgb2rgba),
        KORVANE_ROW(packed, rgba2rgb),
        KORVANE_ROW(packed, rgb2yuv),
        KORVANE_ROW(packed, yuv2rgb),
        KORVANE_ROW(packed, yuv2gray),
        KORVANE_ROW(packed, rgb2yuyv),
        KORVANE_ROW(packed, yuyv2rgb),
        KORVANE_ROW(packed, rgb2yvyu),
        KORVANE_ROW(packed, yvyu2rgb),
        KORVANE_ROW(to_three, rgb2yuv422p),
        KORVANE_ROW(from_three, yuv422p2rgb),
        KORVANE_ROW(to_three, rgb2yv12oryu12),
        KORVANE_ROW(from_three, yv12oryu122rgb),
        KORVANE_ROW(two_planes, rgb2nv12),
        KORVANE_ROW(two_planes, rgb2nv21),
        KORVANE_ROW(from_two, nv122rgb),
        KORVANE_ROW(from_two, nv212rgb),
    };
#undef KORVANE_ROW
}

auto_ptr<Image> gSource;
auto_ptr<Image> gResult;
auto_ptr<Stream> gStream;

void make_source(Buffers& b) {
    unsigned char* planes[4] = {b.picture.data()};
    gSource = Image::createImage(kWidth, kHeight, 1, IMAGE_FORMAT_TYPE_RGB, planes);
}

Effect image_conversion(const char* name, ImageFormatType to) {
    return {name, [to](Buffers& /*b*/) { gResult = ColorConvert::convert(gSource, IMAGE_FORMAT_TYPE_RGB * 256 + to); },
            make_source};
}

std::vector<Effect> images() {
    return {
        image_conversion("ColorConvert, RGB to RGBA", IMAGE_FORMAT_TYPE_RGBA),
        image_conversion("ColorConvert, RGB to GRAY", IMAGE_FORMAT_TYPE_GRAY),
        image_conversion("ColorConvert, RGB to YUYV", IMAGE_FORMAT_TYPE_YUYV),
        {"JpegEncoder, RGB", [](Buffers& /*b*/) { JpegEncoder().encode(gStream, gSource, 90); },
         [](Buffers& b) {
             make_source(b);
             gStream = new RewindingStream(b.second.data(), b.second.size());
         }},
        // Reads what the encoder has left.
        {"JpegDecoder, RGB", [](Buffers& /*b*/) { JpegDecoder().decode(gStream, gResult); },
         [](Buffers& b) {
             gSource = nullptr;
             gResult = Image::createImage(1, 1, 1, IMAGE_FORMAT_TYPE_GRAY, nullptr);
             gStream = new RewindingStream(b.second.data(), b.second.size());
         }},
    };
}

// The worker takes the only frame before the burst ends, or there would be nothing to merge.
void capture_burst(Buffers& b) {
    SuperCapture burst;
    burst.init(kWidth, kHeight, FRAME_FORMAT_TYPE_YUYV);
    unsigned char* planes[4] = {b.first.data()};
    burst.pushFrame(planes);
    burst.waitUntilTaken(1);
    burst.popFrame(planes);
    burst.final();
}

void sweep_panorama(Buffers& b) {
    PanoramaModule panorama;
    panorama.startup(kWidth, kHeight, PANORAMA_FRAME_FORMAT_NV21, nullptr);
    int x = 0;
    int y = 0;
    // The first frame only gives the reference.
    panorama.pushFrame(b.first.data(), 1.0F, 1.0F, x, y);
    panorama.pushFrame(b.first.data(), 1.0F, 9.0F, x, y);
}

std::vector<Effect> captures() {
    return {
        {"super capture, one frame at a time", capture_burst, {}},
        {"panorama, one frame waiting", sweep_panorama, {}},
        {"timestamp",
         [](Buffers& b) {
             make_photo_timestamp_watermark_to_yuyv(b.first.data(), kWidth, kHeight, "2026-01-02 03:04", 0);
         },
         {}},
    };
}

}  // namespace

// The one argument, where given, is a part of the names of those to run.
int main(int count, char** arguments) {
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    const std::string only = count > 1 ? arguments[1] : "";
    Buffers buffers;
    for (const auto& list : {blurs(), analyses(), conversions(), images(), captures()}) {
        for (const Effect& effect : list) {
            if (effect.name.find(only) == std::string::npos) {
                continue;
            }
            std::memcpy(buffers.first.data(), buffers.picture.data(), buffers.picture.size());
            if (effect.prepare) {
                effect.prepare(buffers);
            }
            const korvane::bench::MemoryUse use = korvane::bench::memory_use_of([&] { effect.work(buffers); });
            std::printf("%s\t%zu\t%zu\n", effect.name.c_str(), use.heapBytes, use.stackBytes);
        }
    }
    return 0;
}
