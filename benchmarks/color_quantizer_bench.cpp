// SPDX-License-Identifier: Apache-2.0
// A palette of 256 colors for one megapixel against libimagequant at speed 10, which makes its palette only here too,
// and against the same work with the plain search for nearest colors.
#include <hwy/highway.h>
#include <hwy/targets.h>
#include <libimagequant.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "applications/gif_maker/color_quantizer.h"
#include "benchmarks/support/comparison.h"
#include "benchmarks/support/picture.h"

namespace {

using namespace korvane::bench;

constexpr int kWidth = 1152;
constexpr int kHeight = 868;
constexpr int kColors = 256;

std::vector<Color> palette_of(const std::vector<unsigned char>& rgba) {
    ColorQuantizer quantizer;
    quantizer.prepare(kWidth, kHeight);
    for (size_t i = 0; i < rgba.size(); i += 4) {
        quantizer.addColor(rgba[i], rgba[i + 1], rgba[i + 2]);
    }
    return quantizer.getPalette(kColors);
}

size_t peer_palette_size(const std::vector<unsigned char>& rgba) {
    liq_attr* attributes = liq_attr_create();
    liq_set_speed(attributes, 10);
    liq_set_max_colors(attributes, kColors);
    liq_image* image = liq_image_create_rgba(attributes, rgba.data(), kWidth, kHeight, 0);
    liq_result* result = nullptr;
    size_t size = 0;
    if (liq_image_quantize(image, attributes, &result) == LIQ_OK) {
        size = liq_get_palette(result)->count;
        liq_result_destroy(result);
    }
    liq_image_destroy(image);
    liq_attr_destroy(attributes);
    return size;
}

// All kernels run their scalar twins while it lives.
class PlainKernels {
  public:
    PlainKernels() { dispatch_to(HWY_TARGETS & (HWY_SCALAR | HWY_EMU128)); }
    ~PlainKernels() { dispatch_to(m_Before); }
    PlainKernels(const PlainKernels&) = delete;
    PlainKernels& operator=(const PlainKernels&) = delete;

  private:
    static void dispatch_to(int64_t targets) {
        hwy::SetSupportedTargetsForTest(targets);
        hwy::GetChosenTarget().Update(targets);
    }

    const int64_t m_Before = hwy::SupportedTargets();
};

void compare_quantizer(Comparison& comparison) {
    const auto picture = std::make_shared<std::vector<unsigned char>>(rgba_picture(kWidth, kHeight));
    const auto plain = [picture] {
        const PlainKernels kernels;
        return palette_of(*picture);
    };
    comparison.verify("the same palette with the plain search", [=] {
        const std::vector<Color> expected = plain();
        const std::vector<Color> palette = palette_of(*picture);
        return palette.size() == kColors && std::equal(palette.begin(), palette.end(), expected.begin(), expected.end(),
                                                       [](const Color& a, const Color& b) {
                                                           return a.red == b.red && a.green == b.green &&
                                                                  a.blue == b.blue;
                                                       });
    });
    comparison.verify("libimagequant makes a palette of the same size",
                      [picture] { return peer_palette_size(*picture) >= kColors * 9 / 10; });
    comparison.kernel([picture] { palette_of(*picture); });
    comparison.against("plain search", {faster(9)}, [plain] { plain(); });
    comparison.against("libimagequant, speed 10", {faster(1.0)}, [picture] { peer_palette_size(*picture); });
}

const Registration kMegapixel("color_quantizer/1152x868", compare_quantizer);

}  // namespace
