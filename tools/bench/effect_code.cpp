// SPDX-License-Identifier: Apache-2.0
#include "tools/bench/effect_code.h"

#include <map>

namespace korvane {
namespace {

const std::map<std::string, std::string>& blur_calls() {
    static const std::map<std::string, std::string> calls = {
        {"stack", R"(#include "algorithms/stack_blur.h"
stack_blur(rgba, width, height, {radius});
)"},
        {"fast", R"(#include "algorithms/fast_blur.h"
fast_blur(reinterpret_cast<unsigned int*>(rgba), rgba, width, height, {radius});
)"},
        {"box", R"(#include "algorithms/gauss_blur.h"
// channel, blurred: width * height bytes; colours are blurred channel by channel
box_blur(channel, blurred, width, height, {radius});
)"},
        {"gauss", R"(#include "algorithms/gauss_blur.h"
// channel, blurred: width * height bytes; colours are blurred channel by channel
gauss_blur(channel, blurred, width, height, {radius});
)"},
        {"iir", R"(#include "algorithms/gauss_blur_iir.h"
gaussiir(rgba, width, height, 4, width * 4, {radius:float}, {radius:float});
)"},
    };
    return calls;
}

}  // namespace

EffectCode blur_code(const std::string& method) {
    return {blur_calls().at(method) + R"(alpha? #include "algorithms/alpha_blend.h"
alpha? alpha_blend(rgba, width * height, {color:bytes}, {alpha});)",
            method == "stack" ? R"(import korvane.effects.Blur;
!alpha? Blur.apply(bitmap, {radius});
alpha? Blur.dim(bitmap, {radius}, {color:argb}, {alpha:share});)"
                              : ""};
}

EffectCode filter_code(const std::string& name) {
    return {R"(#include "applications/filters/gpu_image_filter_factory.h"
{
    auto_ptr<ImageFilterBaseGL> filter(ImageFilterFactory::createFilter(")" +
                name + R"("));
    filter->initEngine();
    filter->setupGraphics(1);
    float upright[8] = {0, 0, 1, 0, 0, 1, 1, 1};
    filter->setParameters("mTexVertices", upright);
each?     float {key} = {value:float};
each?     filter->setParameters("{key}", &{key});
    filter->process(rgba, width, height);
    filter->release();
})",
            R"(import korvane.effects.Filter;
try (Filter filter = Filter.open(")" +
                name + R"(")) {
each?     filter.set("{key}", {value:float});
    filter.apply(bitmap);
})"};
}

EffectCode palette_code() {
    return {R"(#include "applications/gif_maker/color_quantizer.h"
{
    // rgb: width * height pixels of three bytes
    ColorQuantizer quantizer;
    quantizer.prepare(width, height);
    for (int i = 0; i < width * height; ++i) {
        quantizer.addColor(rgb[3 * i], rgb[3 * i + 1], rgb[3 * i + 2]);
    }
    std::vector<Color> palette = quantizer.getPalette({colors});
    quantizer.release();
})",
            R"(import korvane.effects.Palette;
int[] colors = Palette.of(bitmap, {colors});)"};
}

EffectCode stamp_code() {
    return {R"(#include "applications/photo_timestamp/timestamp_watermark.h"
// yuyv: width * height * 2 bytes, of even width
make_photo_timestamp_watermark_to_yuyv(yuyv, width, height, {text:quoted}, 0);)",
            R"(import korvane.effects.TimestampStamp;
// yuyv: width * height * 2 bytes, of even width
TimestampStamp.stamp(yuyv, width, height, {text:quoted});)"};
}

EffectCode corners_code() {
    return {R"(#include "algorithms/fast_detection.h"
{
    // gray: width * height bytes
    std::vector<KeyPoint> corners;
    FastParams params = {{threshold}, {keepAll:not}, {distance}, 0, 3, 3};
    fast16(gray, corners, width, height, &params);
})",
            ""};
}

}  // namespace korvane
