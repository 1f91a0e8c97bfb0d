// SPDX-License-Identifier: Apache-2.0
// The example of docs/adding-a-filter.md: sepia, as strong as asked for.
#include <new>

#include "applications/filters/gpu_image_filter_base.h"

extern const FilterDescription kImageFilterSepia;

class ImageFilterSepiaGL : public ImageFilterBaseGL {
  public:
    float mStrength = 0.0F;

  protected:
    const FilterDescription& description() const override { return kImageFilterSepia; }
};

namespace {

constexpr char kFragmentShader[] =
    "uniform float mStrength;\n"
    "void main() {\n"
    "    vec4 color = texture2D(tex_sampler,v_texcoord);\n"
    "    float y = dot(color.rgb, vec3(0.299, 0.587, 0.114));\n"
    "    vec3 sepia = vec3(y, y * 0.8, y * 0.6);\n"
    "    gl_FragColor = vec4(mix(color.rgb, sepia, mStrength), color.a);\n"
    "}\n";

const FilterParameter kParameters[] = {
    {"mStrength", PARAMETER_TYPE_FLOAT, store_clamped<&ImageFilterSepiaGL::mStrength>, "0 ... 1",
     "0 leaves the colours, 1 is all sepia"},
};

const FilterUniform kUniforms[] = {
    {"mStrength", FilterField<&ImageFilterSepiaGL::mStrength>::uniform(), 1.0F},
};

}  // namespace

const FilterDescription kImageFilterSepia = {
    "ImageFilterSepia", "Brown tones of an old photo",
    kFragmentShader,    kParameters,
    kUniforms,          []() -> ImageFilterBaseGL* { return new (std::nothrow) ImageFilterSepiaGL(); },
};
