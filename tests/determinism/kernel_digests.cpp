// SPDX-License-Identifier: Apache-2.0
#include "tests/determinism/kernel_digests.h"

#include <cstring>
#include <functional>
#include <utility>

#include "algorithms/alpha_blend.h"
#include "algorithms/fast_blur.h"
#include "algorithms/fast_detection.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/gauss_blur_iir.h"
#include "algorithms/lbp.h"
#include "algorithms/stack_blur.h"
#include "applications/gif_maker/color_quantizer.h"
#include "applications/pano/frame_convert.h"
#include "applications/photo_timestamp/timestamp_watermark.h"
#include "applications/super_capture/merge_kernels.h"
#include "frameworks/images/color_convert.h"
#include "tests/support/random_bytes.h"

namespace {

using Bytes = std::vector<unsigned char>;

template <typename T>
Bytes bytes_of(const std::vector<T>& values) {
    Bytes bytes(values.size() * sizeof(T));
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

// Noise on slopes, so that corners, edges and flat parts are all there.
Bytes picture(size_t bytes, uint32_t seed) {
    Bytes result = random_bytes(bytes, seed);
    for (size_t i = 0; i < bytes; ++i) {
        const size_t slope = i / 7 % 512;
        result[i] = static_cast<unsigned char>((slope < 256 ? slope : 511 - slope) * 7 / 8 + result[i] / 8);
    }
    return result;
}

class Kernels {
  public:
    Kernels(int width, int height)
        : m_Width(width), m_Height(height), m_Pixels(static_cast<size_t>(width) * static_cast<size_t>(height)) {}

    Digests run() {
        blurs();
        conversions();
        captures();
        analyses();
        return m_Digests;
    }

  private:
    void add(const std::string& name, const Bytes& bytes) {
        m_Digests[name + ' ' + std::to_string(m_Width) + 'x' + std::to_string(m_Height)] = digest(bytes);
    }

    void blurs() {
        const Bytes rgba = picture(m_Pixels * 4, 1);
        for (const int radius : {1, 9, 100}) {
            const std::string suffix = " r=" + std::to_string(radius);
            Bytes stacked = rgba;
            stack_blur(stacked.data(), m_Width, m_Height, radius);
            add("stack_blur" + suffix, stacked);
            std::vector<unsigned> pixels(m_Pixels);
            std::memcpy(pixels.data(), rgba.data(), rgba.size());
            Bytes boxed(m_Pixels * 4);
            fast_blur(pixels.data(), boxed.data(), m_Width, m_Height, radius);
            add("fast_blur" + suffix, boxed);
            for (const auto& [name, blur] : {std::pair("box_blur", &box_blur), std::pair("gauss_blur", &gauss_blur)}) {
                Bytes gray = picture(m_Pixels, 2);
                Bytes blurred(m_Pixels);
                blur(gray.data(), blurred.data(), m_Width, m_Height, radius);
                add(name + suffix, blurred);
            }
        }
        for (const int depth : {1, 3, 4}) {
            Bytes image = picture(m_Pixels * static_cast<size_t>(depth), 3);
            gaussiir(image.data(), m_Width, m_Height, depth, m_Width * depth, 10.0F, 25.0F);
            add("gaussiir depth " + std::to_string(depth), image);
        }
        for (const auto& [name, blend] :
             {std::pair("alpha_blend", &alpha_blend), std::pair("alpha_blend_neon", &alpha_blend_neon)}) {
            Bytes blended = rgba;
            blend(blended.data(), m_Width * m_Height, 16, 99, 250, 77);
            add(name, blended);
        }
    }

    void conversions() {
        using Packed = int (*)(const unsigned char*, unsigned char*, int, int);
        const struct {
            const char* name;
            Packed convert;
            size_t from;  // bytes a pixel
            size_t to;
        } packed[] = {
            {"gray2rgb", color_convert_gray2rgb, 1, 3}, {"gray2rgba", color_convert_gray2rgba, 1, 4},
            {"rgb2gray", color_convert_rgb2gray, 3, 1}, {"rgba2gray", color_convert_rgba2gray, 4, 1},
            {"rgb2rgba", color_convert_rgb2rgba, 3, 4}, {"rgba2rgb", color_convert_rgba2rgb, 4, 3},
            {"rgb2yuv", color_convert_rgb2yuv, 3, 3},   {"yuv2rgb", color_convert_yuv2rgb, 3, 3},
            {"yuv2gray", color_convert_yuv2gray, 3, 1}, {"rgb2yuyv", color_convert_rgb2yuyv, 3, 2},
            {"yuyv2rgb", color_convert_yuyv2rgb, 2, 3}, {"rgb2yvyu", color_convert_rgb2yvyu, 3, 2},
            {"yvyu2rgb", color_convert_yvyu2rgb, 2, 3},
        };
        for (const auto& row : packed) {
            const Bytes source = random_bytes(m_Pixels * row.from, 4);
            // Gray of RGBA reads two bytes behind its output.
            Bytes result(m_Pixels * row.to + 2);
            row.convert(source.data(), result.data(), m_Width, m_Height);
            add(row.name, result);
        }
        const Bytes rgb = random_bytes(m_Pixels * 3, 5);
        const auto encode = [&](const char* name, const std::function<void(unsigned char*, unsigned char*)>& work) {
            Bytes planes(m_Pixels * 4);
            work(planes.data(), planes.data() + m_Pixels);
            add(name, planes);
        };
        const size_t plane = m_Pixels;
        encode("rgb2yuv422p",
               [&](auto* y, auto* uv) { color_convert_rgb2yuv422p(rgb.data(), y, uv, uv + plane, m_Width, m_Height); });
        encode("rgb2yv12oryu12", [&](auto* y, auto* uv) {
            color_convert_rgb2yv12oryu12(rgb.data(), y, uv, uv + plane, m_Width, m_Height);
        });
        encode("rgb2nv12", [&](auto* y, auto* uv) { color_convert_rgb2nv12(rgb.data(), y, uv, m_Width, m_Height); });
        encode("rgb2nv21", [&](auto* y, auto* vu) { color_convert_rgb2nv21(rgb.data(), y, vu, m_Width, m_Height); });
        const Bytes y = random_bytes(m_Pixels, 6);
        const Bytes u = random_bytes(m_Pixels, 7);
        const Bytes v = random_bytes(m_Pixels, 8);
        const auto decode = [&](const char* name, const std::function<void(unsigned char*)>& work) {
            Bytes result(m_Pixels * 3);
            work(result.data());
            add(name, result);
        };
        decode("yuv422p2rgb",
               [&](auto* to) { color_convert_yuv422p2rgb(y.data(), u.data(), v.data(), to, m_Width, m_Height); });
        decode("yv12oryu122rgb",
               [&](auto* to) { color_convert_yv12oryu122rgb(y.data(), u.data(), v.data(), to, m_Width, m_Height); });
        decode("nv122rgb", [&](auto* to) { color_convert_nv122rgb(y.data(), u.data(), to, m_Width, m_Height); });
        decode("nv212rgb", [&](auto* to) { color_convert_nv212rgb(y.data(), u.data(), to, m_Width, m_Height); });
    }

    void captures() {
        const Bytes frame = random_bytes(m_Pixels * 2, 9);
        for (const auto& [name, convert] :
             {std::pair("nv12_to_yv12", &convert_nv12_to_yv12), std::pair("nv21_to_yv12", &convert_nv21_to_yv12)}) {
            Bytes planar(m_Pixels * 2);
            convert(frame.data(), planar.data(), m_Width, m_Height);
            add(name, planar);
        }
        std::vector<int> sums(frame.size());
        Bytes merged(frame.size());
        korvane::merge_first(frame.data(), sums.data(), frame.size());
        korvane::merge_add(random_bytes(frame.size(), 10).data(), sums.data(), frame.size());
        korvane::merge_add(random_bytes(frame.size(), 11).data(), sums.data(), frame.size());
        korvane::merged_mean(sums.data(), merged.data(), frame.size(), 3);
        add("merged_mean", merged);
        korvane::merge_max(random_bytes(frame.size(), 12).data(), sums.data(), frame.size());
        korvane::merged_low_bytes(sums.data(), merged.data(), frame.size());
        add("merge_max, merged_low_bytes", merged);
        add("luma sums", bytes_of(std::vector<uint32_t>{korvane::luma_sum(frame.data(), m_Pixels),
                                                        korvane::luma_sum_yuyv(frame.data(), m_Pixels)}));
        Bytes stamped = frame;
        make_photo_timestamp_watermark_to_yuyv(stamped.data(), m_Width, m_Height, "2026-01-02 03:04", 0);
        add("timestamp", stamped);
    }

    void analyses() {
        const Bytes gray = picture(m_Pixels, 13);
        for (const int isThinned : {0, 1}) {
            const FastParams params = {9, isThinned, isThinned * 8, 0, 3, 3};
            std::vector<KeyPoint> corners;
            fast16(gray.data(), corners, m_Width, m_Height, &params);
            std::vector<int> places;
            for (const KeyPoint& corner : corners) {
                places.insert(places.end(), {corner.x, corner.y});
            }
            add(isThinned == 0 ? "fast16 in one bin" : "fast16 thinned", bytes_of(places));
        }
        patterns();
        ColorQuantizer quantizer;
        quantizer.prepare(m_Width, m_Height);
        const Bytes rgb = picture(m_Pixels * 3, 14);
        for (size_t i = 0; i < rgb.size(); i += 3) {
            quantizer.addColor(rgb[i], rgb[i + 1], rgb[i + 2]);
        }
        add("palette", bytes_of(quantizer.getPalette(64)));
    }

    void patterns() {
        const auto rows = static_cast<unsigned short>(m_Height);
        const auto columns = static_cast<unsigned short>(m_Width);
        const unsigned slots = lbp_pyr_get_dim(rows, columns, 3);
        const Bytes levels = picture(m_Pixels, 15);
        const auto walk = [&](auto feature, auto& vec, unsigned count) {
            std::vector<unsigned> image(levels.begin(), levels.end());
            return feature(vec.data(), count, image.data(), rows, columns);
        };
        std::vector<char> dense(slots);
        walk(lbp_pyr_features, dense, slots);
        add("lbp dense", bytes_of(dense));
        std::vector<unsigned> sparse(slots / 256);
        walk(lbp_pyr_features_sparse, sparse, slots / 256);
        add("lbp sparse", bytes_of(sparse));
        std::vector<double> weights(slots);
        for (size_t i = 0; i < weights.size(); ++i) {
            weights[i] = 1.0 / static_cast<double>(i + 1);
        }
        add("lbp dot product", bytes_of(std::vector<double>{walk(lbp_pyr_dotprod, weights, slots)}));
        std::vector<long> counts(slots);
        walk(lbp_pyr_addvec, counts, slots);
        walk(lbp_pyr_addvec, counts, slots);
        walk(lbp_pyr_subvec, counts, slots);
        add("lbp training", bytes_of(counts));
    }

    const int m_Width;
    const int m_Height;
    const size_t m_Pixels;
    Digests m_Digests;
};

}  // namespace

uint64_t digest(const std::vector<unsigned char>& bytes) {
    uint64_t hash = 0xCBF29CE484222325U;
    for (const unsigned char byte : bytes) {
        hash = (hash ^ byte) * 0x100000001B3U;
    }
    return hash;
}

Digests kernel_digests(int width, int height) {
    return Kernels(width, height).run();
}
