// SPDX-License-Identifier: Apache-2.0
// The inverted mean of the three channels as grey.
#include <new>

#include "applications/filters/gpu_image_filter_base.h"

extern const FilterDescription kImageFilterXray;

class ImageFilterXrayGL : public ImageFilterBaseGL {
  protected:
    const FilterDescription& description() const override { return kImageFilterXray; }
};

namespace {

constexpr char kFragmentShader[] =
    "void main() {\n"
    "    vec4 color = texture2D(tex_sampler,v_texcoord);\n"
    "    float gray = 1.0 - (color.r + color.g + color.b) / 3.0;\n"
    "     gl_FragColor = vec4 (gray,gray, gray, 1.0);\n"
    "}\n";

}  // namespace

const FilterDescription kImageFilterXray = {
    "ImageFilterXray",
    "The inverted mean of the channels as grey",
    kFragmentShader,
    {},
    {},
    []() -> ImageFilterBaseGL* { return new (std::nothrow) ImageFilterXrayGL(); },
};
