// SPDX-License-Identifier: Apache-2.0
// A mirror: what lies beyond a line shows the reflection of what lies before it. A line at 1 is off, and setting one
// axis switches the other off.
#include <new>

#include "applications/filters/gpu_image_filter_base.h"

extern const FilterDescription kImageFilterMirror;

class ImageFilterMirrorGL : public ImageFilterBaseGL {
  public:
    float mCenterx = 0.0F;
    float mCentery = 0.0F;

  protected:
    const FilterDescription& description() const override { return kImageFilterMirror; }
};

namespace {

using Filter = ImageFilterMirrorGL;

constexpr char kFragmentShader[] =
    "uniform float mCenterx; \n"
    "uniform float mCentery; \n"
    "void main() {\n"
    "    vec2 v_texcoord2 = v_texcoord; \n"
    "    if(v_texcoord2.x > mCenterx) { \n"
    "        v_texcoord2.x = 2.0 * mCenterx - v_texcoord2.x;} \n"
    "    if(v_texcoord2.y > mCentery) { \n"
    "        v_texcoord2.y = 2.0 * mCentery - v_texcoord2.y; } \n"
    "    gl_FragColor = texture2D(tex_sampler,v_texcoord2);\n"
    "}\n";

template <auto Axis, auto Other>
void store_axis(ImageFilterBaseGL& filter, const void* value) {
    store_clamped<Axis>(filter, value);
    FilterField<Other>::set(filter, 1.0F);
}

const FilterParameter kParameters[] = {
    {"mCenterx", PARAMETER_TYPE_FLOAT, store_axis<&Filter::mCenterx, &Filter::mCentery>, "0 ... 1",
     "mirror line across; switches the other off"},
    {"mCentery", PARAMETER_TYPE_FLOAT, store_axis<&Filter::mCentery, &Filter::mCenterx>, "0 ... 1",
     "mirror line down; switches the other off"},
};

const FilterUniform kUniforms[] = {
    {"mCenterx", FilterField<&ImageFilterMirrorGL::mCenterx>::uniform(), 1.0F},
    {"mCentery", FilterField<&ImageFilterMirrorGL::mCentery>::uniform(), 0.5F},
};

}  // namespace

const FilterDescription kImageFilterMirror = {
    "ImageFilterMirror", "One half of the picture mirrored over the other",
    kFragmentShader,     kParameters,
    kUniforms,           []() -> ImageFilterBaseGL* { return new (std::nothrow) Filter(); },
};
