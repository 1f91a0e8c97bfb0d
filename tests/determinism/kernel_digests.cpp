// SPDX-License-Identifier: Apache-2.0
#include "tests/determinism/kernel_digests.h"

#include <cstring>
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
    void add(const std::string& name, const Bytes& bytes) { m_Digests[name] = digest(bytes); }

    // What `work` makes of the bytes.
    template <typename Work>
    void add(const std::string& name, Bytes bytes, const Work& work) {
        work(bytes.data());
        add(name, bytes);
    }

    void blurs() {
        const Bytes rgba = picture(m_Pixels * 4, 1);
        for (const int radius : {1, 9, 100}) {
            const std::string suffix = " r=" + std::to_string(radius);
            add("stack_blur" + suffix, rgba, [&](auto* to) { stack_blur(to, m_Width, m_Height, radius); });
            std::vector<unsigned> pixels(m_Pixels);
            std::memcpy(pixels.data(), rgba.data(), rgba.size());
            add("fast_blur" + suffix, Bytes(m_Pixels * 4),
                [&](auto* to) { fast_blur(pixels.data(), to, m_Width, m_Height, radius); });
            for (const auto& [name, blur] : {std::pair("box_blur", &box_blur), std::pair("gauss_blur", &gauss_blur)}) {
                Bytes gray = picture(m_Pixels, 2);
                add(name + suffix, Bytes(m_Pixels),
                    [&, blur = blur](auto* to) { blur(gray.data(), to, m_Width, m_Height, radius); });
            }
        }
        for (const int depth : {1, 3, 4}) {
            add("gaussiir depth " + std::to_string(depth), picture(m_Pixels * static_cast<size_t>(depth), 3),
                [&](auto* to) { gaussiir(to, m_Width, m_Height, depth, m_Width * depth, 10.0F, 25.0F); });
        }
        for (const auto& [name, blend] :
             {std::pair("alpha_blend", &alpha_blend), std::pair("alpha_blend_neon", &alpha_blend_neon)}) {
            add(name, rgba, [&, blend = blend](auto* to) { blend(to, m_Width * m_Height, 16, 99, 250, 77); });
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
            add(row.name, Bytes(m_Pixels * row.to + 2),
                [&](auto* to) { row.convert(source.data(), to, m_Width, m_Height); });
        }
        const Bytes rgb = random_bytes(m_Pixels * 3, 5);
        const Bytes planes(m_Pixels * 4);
        const size_t n = m_Pixels;
        add("rgb2yuv422p", planes,
            [&](auto* y) { color_convert_rgb2yuv422p(rgb.data(), y, y + n, y + 2 * n, m_Width, m_Height); });
        add("rgb2yv12oryu12", planes,
            [&](auto* y) { color_convert_rgb2yv12oryu12(rgb.data(), y, y + n, y + 2 * n, m_Width, m_Height); });
        add("rgb2nv12", planes, [&](auto* y) { color_convert_rgb2nv12(rgb.data(), y, y + n, m_Width, m_Height); });
        add("rgb2nv21", planes, [&](auto* y) { color_convert_rgb2nv21(rgb.data(), y, y + n, m_Width, m_Height); });
        const Bytes y = random_bytes(n, 6);
        const Bytes u = random_bytes(n, 7);
        const Bytes v = random_bytes(n, 8);
        const Bytes black(n * 3);
        add("yuv422p2rgb", black,
            [&](auto* to) { color_convert_yuv422p2rgb(y.data(), u.data(), v.data(), to, m_Width, m_Height); });
        add("yv12oryu122rgb", black,
            [&](auto* to) { color_convert_yv12oryu122rgb(y.data(), u.data(), v.data(), to, m_Width, m_Height); });
        add("nv122rgb", black, [&](auto* to) { color_convert_nv122rgb(y.data(), u.data(), to, m_Width, m_Height); });
        add("nv212rgb", black, [&](auto* to) { color_convert_nv212rgb(y.data(), u.data(), to, m_Width, m_Height); });
    }

    void captures() {
        const Bytes frame = random_bytes(m_Pixels * 2, 9);
        for (const auto& [name, convert] :
             {std::pair("nv12_to_yv12", &convert_nv12_to_yv12), std::pair("nv21_to_yv12", &convert_nv21_to_yv12)}) {
            add(name, Bytes(m_Pixels * 2),
                [&, convert = convert](auto* to) { convert(frame.data(), to, m_Width, m_Height); });
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
        add("timestamp", frame,
            [&](auto* to) { make_photo_timestamp_watermark_to_yuyv(to, m_Width, m_Height, "2026-01-02 03:04", 0); });
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
