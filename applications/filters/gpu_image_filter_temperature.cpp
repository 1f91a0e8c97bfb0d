// SPDX-License-Identifier: Apache-2.0
// A false-colour heat map: luma on a ramp from blue over cyan, green and yellow to red, each quarter shaped by a
// parabola.
#include <new>

#include "applications/filters/gpu_image_filter_base.h"

extern const FilterDescription kImageFilterTemperature;

class ImageFilterTemperatureGL : public ImageFilterBaseGL {
  protected:
    const FilterDescription& description() const override { return kImageFilterTemperature; }
};

namespace {

constexpr char kFragmentShader[] =
    "void main() {\n"
    "    vec4 color = texture2D(tex_sampler,v_texcoord);\n"
    "    float y = color.r * 0.299 + color.g * 0.587 + color.b * 0.114; \n"
    "     float f = 16.0 * (y - 0.5) * (y - 0.5); \n"
    "    if(y > 0.75 ) { \n"
    "        f = -16.0 * (y - 0.75) * (y - 0.75) + 1.0; \n"
    "        gl_FragColor = vec4(1.0, f, 0.0, 1.0); } \n"
    "    else if(y > 0.5 ) { \n"
    "        gl_FragColor = vec4(f, 1.0, 0.0, 1.0); } \n"
    "    else if(y > 0.25) {         gl_FragColor = vec4(0.0 , 1.0, f, 1.0); } \n"
    "    else {         f = -16.0 * (y - 0.25) * (y - 0.25) + 1.0; \n"
    "        gl_FragColor = vec4(0.0, f, 1.0, 1.0); } \n"
    "}\n";

}  // namespace

const FilterDescription kImageFilterTemperature = {
    "ImageFilterTemperature",
    "A false-colour heat map of the brightness",
    kFragmentShader,
    {},
    {},
    []() -> ImageFilterBaseGL* { return new (std::nothrow) ImageFilterTemperatureGL(); },
};
