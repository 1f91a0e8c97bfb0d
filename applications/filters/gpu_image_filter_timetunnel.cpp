// SPDX-License-Identifier: Apache-2.0
// A tunnel: points outside a circle around the middle show its rim. The shader compares squared distances, so the
// square that is stored is the square of the radius that a caller gives; the default is a squared radius as it stands.
#include <new>

#include "applications/filters/gpu_image_filter_base.h"

extern const FilterDescription kImageFilterTimetunnel;

class ImageFilterTimetunnelGL : public ImageFilterBaseGL {
  public:
    float mRadius = 0.0F;

  protected:
    const FilterDescription& description() const override { return kImageFilterTimetunnel; }
};

namespace {

using Filter = ImageFilterTimetunnelGL;

constexpr char kFragmentShader[] =
    "uniform float mRadius; \n"
    "void main() {\n"
    "    vec2 v_texcoord2 = v_texcoord; \n"
    "    float dx = v_texcoord.x - 0.5; \n"
    "    float dy = v_texcoord.y - 0.5; \n"
    "    float dist = dx * dx + dy * dy; \n"
    "    if(dist > mRadius) { \n"
    "        float factor = sqrt(mRadius / dist); \n"
    "        v_texcoord2.x = factor * dx + 0.5; \n"
    "        v_texcoord2.y = factor * dy + 0.5; \n"
    "    }; \n"
    "    gl_FragColor = texture2D(tex_sampler,v_texcoord2);\n"
    "}\n";

const FilterParameter kParameters[] = {
    {"mRadius", PARAMETER_TYPE_FLOAT, store_squared<&Filter::mRadius>, "0 ... 1",
     "radius of the circle, as a part of the width across and of the height down; 0.5 reaches the edges"},
};

const FilterUniform kUniforms[] = {
    {"mRadius", FilterField<&ImageFilterTimetunnelGL::mRadius>::uniform(), 0.2F},
};

}  // namespace

const FilterDescription kImageFilterTimetunnel = {
    "ImageFilterTimetunnel",
    "The picture inside a circle, its rim drawn out in streaks",
    kFragmentShader,
    kParameters,
    kUniforms,
    []() -> ImageFilterBaseGL* { return new (std::nothrow) Filter(); },
};
