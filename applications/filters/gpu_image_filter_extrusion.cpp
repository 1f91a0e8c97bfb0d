// SPDX-License-Identifier: Apache-2.0
// A bulge: points move along their offset from the centre by a power of their squared distance, times a zoom. The
// shader uses the horizontal centre for both axes; the vertical one is sent and not read, and saved effects rely on
// that look.
#include <new>

#include "applications/filters/gpu_image_filter_base.h"

extern const FilterDescription kImageFilterExtrusion;

class ImageFilterExtrusionGL : public ImageFilterBaseGL {
  public:
    float mCenterx = 0.0F;
    float mCentery = 0.0F;
    float mStrength = 0.0F;
    float mZoom = 0.0F;

    void updateParameters() override {
        // Zero asks for the automatic zoom: the short side over the long one, until the next strength.
        if (mZoom == 0.0F && mViewWidth != 0 && mViewHeight != 0) {
            const auto width = static_cast<float>(mViewWidth);
            const auto height = static_cast<float>(mViewHeight);
            mZoom = width / height;
            if (mZoom > 1.0F) {
                mZoom = height / width;
            }
        }
        ImageFilterBaseGL::updateParameters();
    }

  protected:
    const FilterDescription& description() const override { return kImageFilterExtrusion; }
};

namespace {

using Filter = ImageFilterExtrusionGL;

constexpr char kFragmentShader[] =
    "uniform float mStrength; \n"
    "uniform float mZoom; \n"
    "uniform float mCenterx; \n"
    "uniform float mCentery; \n"
    "void main() {\n"
    "    float dx = v_texcoord.x - mCenterx; \n"
    "    float dy = v_texcoord.y - mCenterx; \n"
    "    float dist = dx * dx + dy * dy; \n"
    "    float factor = pow(dist, mStrength) * mZoom; \n"
    "    vec2 v_texcoord2 = vec2(dx * factor + mCenterx, dy * factor + mCenterx); \n"
    "     gl_FragColor = texture2D(tex_sampler,v_texcoord2); \n"
    "}\n";

void store_strength(ImageFilterBaseGL& filter, const void* value) {
    auto& extrusion = static_cast<Filter&>(filter);
    extrusion.mStrength = *static_cast<const float*>(value);
    extrusion.mZoom = extrusion.mStrength >= 0.0F ? 1.0F : 0.0F;
}

// Below -0.5 points near the centre are taken from farther away than those at the edges, and the picture breaks up.
// Above 10 one colour fills it.
const FilterParameter kParameters[] = {
    {"mStrength", PARAMETER_TYPE_FLOAT, store_strength, "-0.5 ... 10",
     "exponent of the bulge; below 0 the zoom follows the shape of the picture"},
    {"mCenterx", PARAMETER_TYPE_FLOAT, store_clamped<&Filter::mCenterx>, "0 ... 1", "centre, across and down"},
    {"mCentery", PARAMETER_TYPE_FLOAT, store_clamped<&Filter::mCentery>, "0 ... 1", "without effect"},
};

const FilterUniform kUniforms[] = {
    {"mStrength", FilterField<&ImageFilterExtrusionGL::mStrength>::uniform(), 0.2F},
    {"mZoom", FilterField<&ImageFilterExtrusionGL::mZoom>::uniform(), 1.0F},
    {"mCenterx", FilterField<&ImageFilterExtrusionGL::mCenterx>::uniform(), 0.5F},
    {"mCentery", FilterField<&ImageFilterExtrusionGL::mCentery>::uniform(), 0.5F},
};

}  // namespace

const FilterDescription kImageFilterExtrusion = {
    "ImageFilterExtrusion",
    "A bulge around a centre",
    kFragmentShader,
    kParameters,
    kUniforms,
    []() -> ImageFilterBaseGL* { return new (std::nothrow) Filter(); },
};
