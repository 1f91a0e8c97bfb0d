// SPDX-License-Identifier: Apache-2.0
// The input as it is.
#include <new>

#include "applications/filters/gpu_image_filter_base.h"

extern const FilterDescription kImageFilterNone;

class ImageFilterNoneGL : public ImageFilterBaseGL {
  protected:
    const FilterDescription& description() const override { return kImageFilterNone; }
};

namespace {

constexpr char kFragmentShader[] =
    "void main() {\n"
    "    gl_FragColor = texture2D(tex_sampler,v_texcoord);\n"
    "}\n";

}  // namespace

const FilterDescription kImageFilterNone = {
    "ImageFilterNone",
    "A copy of the input",
    kFragmentShader,
    {},
    {},
    []() -> ImageFilterBaseGL* { return new (std::nothrow) ImageFilterNoneGL(); },
};
