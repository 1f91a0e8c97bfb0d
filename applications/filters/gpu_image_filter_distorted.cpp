// SPDX-License-Identifier: Apache-2.0
// A swirl: inside a circle the picture is turned about the centre, most in the middle and not at all at the rim. The
// radius that a caller gives is squared; only the default is used as it stands.
#include <new>

#include "applications/filters/gpu_image_filter_base.h"

extern const FilterDescription kImageFilterDistorted;

class ImageFilterDistortedGL : public ImageFilterBaseGL {
  public:
    float mRadius = 0.0F;
    float mStrength = 0.0F;
    float mCenterx = 0.0F;
    float mCentery = 0.0F;

  protected:
    const FilterDescription& description() const override { return kImageFilterDistorted; }
};

namespace {

using Filter = ImageFilterDistortedGL;

constexpr char kFragmentShader[] =
    "uniform float mRadius; \n"
    "uniform float mStrength; \n"
    "uniform float mCenterx; \n"
    "uniform float mCentery; \n"
    "void main() {\n"
    "    vec2 v_texcoord2 = v_texcoord; \n"
    "     float dx = v_texcoord.x - mCenterx; \n"
    "    float dy = v_texcoord.y - mCentery; \n"
    "    float dist = sqrt(dx * dx + dy * dy); \n"
    "    if(dist < mRadius) { \n"
    "        float angle = (mRadius - dist) / mRadius; \n"
    "        angle = mStrength * angle * angle; \n"
    "        float fsin = sin(angle); \n"
    "        float fcos = cos(angle); \n"
    "        v_texcoord2 = vec2(dx * fcos + dy * fsin + mCenterx, -dx * fsin + dy * fcos + mCentery); } \n"
    "     gl_FragColor = texture2D(tex_sampler,v_texcoord2); \n"
    "}\n";

// With angles beyond 1000 neighbouring pixels of any photo lie more than a turn apart: noise.
const FilterParameter kParameters[] = {
    {"mRadius", PARAMETER_TYPE_FLOAT, store_squared<&Filter::mRadius>, "0 ... 1",
     "its square is the radius, as a part of the width across and of the height down"},
    {"mStrength", PARAMETER_TYPE_FLOAT, store_float<&Filter::mStrength>, "-1000 ... 1000",
     "angle at the centre, in radians"},
    {"mCenterx", PARAMETER_TYPE_FLOAT, store_clamped<&Filter::mCenterx>, "0 ... 1", "centre across"},
    {"mCentery", PARAMETER_TYPE_FLOAT, store_clamped<&Filter::mCentery>, "0 ... 1", "centre down"},
};

const FilterUniform kUniforms[] = {
    {"mStrength", FilterField<&ImageFilterDistortedGL::mStrength>::uniform(), 4.0F},
    {"mRadius", FilterField<&ImageFilterDistortedGL::mRadius>::uniform(), 0.2F},
    {"mCenterx", FilterField<&ImageFilterDistortedGL::mCenterx>::uniform(), 0.5F},
    {"mCentery", FilterField<&ImageFilterDistortedGL::mCentery>::uniform(), 0.5F},
};

}  // namespace

const FilterDescription kImageFilterDistorted = {
    "ImageFilterDistorted",
    "A swirl around a centre",
    kFragmentShader,
    kParameters,
    kUniforms,
    []() -> ImageFilterBaseGL* { return new (std::nothrow) Filter(); },
};
