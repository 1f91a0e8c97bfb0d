// SPDX-License-Identifier: Apache-2.0
// A colour lookup table of 64 levels a channel, mixed with the input.
//
// The table is an RGB image of 4096 x 64: row r, column g * 64 + b holds the colour for red, green and blue levels r, g
// and b. A caller brings its own as a bitmap of that size in the same layout.
#include <cstdlib>
#include <cstring>
#include <new>

#include "applications/filters/gpu_image_filter_base.h"

extern const FilterDescription kImageFilterTable;

class ImageFilterTableGL : public ImageFilterBaseGL {
  public:
    int initParameters() override;
    void updateParameters() override;
    void release() override;

    void set_table(const FilterBitmap& table);

    auto_ptr<GPUImage2D> mImgTab2D;         // the table on the GPU
    FilterBitmap* mFilterBitmap = nullptr;  // the table in memory
    int mColorTableStep = 0;                // levels a channel
    float mStrength = 0.0F;

  protected:
    const FilterDescription& description() const override { return kImageFilterTable; }
};

namespace {

using Filter = ImageFilterTableGL;

constexpr int kLevels = 64;
constexpr int kTableWidth = kLevels * kLevels;
constexpr int kTableHeight = kLevels;
constexpr int kTableDepth = 3;
constexpr int32_t kFormatRgb = 3;
// Eight times what the table takes.
constexpr size_t kTableBufferBytes = 0x600000;

constexpr char kFragmentShader[] =
    "uniform sampler2D tex_frame;\n"
    "uniform float mStrength; \n"
    "void main() {\n"
    "    vec4 color = texture2D(tex_sampler, v_texcoord);\n"
    "    float dstep = 64.0; \n"
    "    float d1 = dstep - 1.0; \n"
    "    float total = dstep * dstep - 1.0; \n"
    "    float scale = d1 * 255.0 / 256.0; \n"
    "    float th0 = 1.0; \n"
    "    float g = color.g * scale; \n"
    "    float g0 = floor(g); \n"
    "    float g1 = g0 + 1.0; \n"
    "    float dg = g - g0; \n"
    "    float b = color.b * scale;\n"
    "    b = b + g0 / 5.0 ; \n"
    "    if(b < th0) b = th0;\n"
    "    if(b > d1 - th0) b = d1 - th0; \n"
    "    float off0 =  (b + g0 * dstep) / total; \n"
    "    float off1 =  (b + g1 * dstep) / total; \n"
    "    vec2 p0 = vec2(off0, color.r);\n"
    "    vec2 p1 = vec2(off1, color.r);\n"
    "    vec4 dcolor0 = texture2D(tex_frame, p0);\n"
    "    vec4 dcolor1 = texture2D(tex_frame, p1);\n"
    "    vec4 colordst = dcolor0 * (1.0 - dg) + dcolor1 * dg; \n"
    "    colordst = color * (1.0 - mStrength) + colordst * mStrength; \n"
    "    gl_FragColor = vec4(colordst.rgb, 1.0);\n"
    "}\n";

const FilterParameter kParameters[] = {
    {"mFilterBitmap", PARAMETER_TYPE_BITMAP,
     [](ImageFilterBaseGL& filter, const void* value) {
         static_cast<Filter&>(filter).set_table(*static_cast<const FilterBitmap*>(value));
     },
     "4096 x 64 pixels", "the lookup table; without one, blue rises with green by up to 50 of 255"},
    {"mStrength", PARAMETER_TYPE_FLOAT, store_float<&Filter::mStrength>, "0 ... 1",
     "how much of the mapped colour shows"},
};

const FilterUniform kUniforms[] = {
    {"mStrength", FilterField<&Filter::mStrength>::uniform(), 1.0F},
};

void free_table(FilterBitmap* table) {
    if (table != nullptr) {
        std::free(table->buffer);
        std::free(table);
    }
}

FilterBitmap* new_identity_table() {
    auto* table = static_cast<FilterBitmap*>(std::malloc(sizeof(FilterBitmap)));
    auto* byte = static_cast<unsigned char*>(std::malloc(kTableBufferBytes));
    if (table == nullptr || byte == nullptr) {
        std::free(table);
        std::free(byte);
        return nullptr;
    }
    *table = {byte, kTableWidth, kTableHeight, kTableDepth, kTableWidth * kTableDepth};
    constexpr float kScale = 255.0F / 63.0F;
    const auto level = [](int i) { return static_cast<unsigned char>(static_cast<float>(i) * kScale); };
    for (int r = 0; r < kLevels; ++r) {
        for (int g = 0; g < kLevels; ++g) {
            for (int b = 0; b < kLevels; ++b) {
                *byte++ = level(r);
                *byte++ = level(g);
                *byte++ = level(b);
            }
        }
    }
    return table;
}

}  // namespace

int ImageFilterTableGL::initParameters() {
    ImageFilterBaseGL::initParameters();
    mColorTableStep = kLevels;
    free_table(mFilterBitmap);
    mFilterBitmap = new_identity_table();
    if (mFilterBitmap == nullptr) {
        return 0;
    }
    mImgTab2D =
        new (std::nothrow) GPUImage2D(mGPUContext, kTableWidth, kTableHeight, kFormatRgb, mFilterBitmap->buffer);
    if (mImgTab2D.get() == nullptr) {
        free_table(mFilterBitmap);
        mFilterBitmap = nullptr;
        return 0;
    }
    return 1;
}

void ImageFilterTableGL::set_table(const FilterBitmap& table) {
    if (mFilterBitmap == nullptr || mImgTab2D.get() == nullptr || table.width != mFilterBitmap->width ||
        table.height != mFilterBitmap->height || table.buffer == nullptr) {
        return;
    }
    for (int y = 0; y < table.height; ++y) {
        const unsigned char* source = table.buffer + static_cast<ptrdiff_t>(y) * table.stride;
        unsigned char* row = mFilterBitmap->buffer + static_cast<ptrdiff_t>(y) * mFilterBitmap->stride;
        for (int x = 0; x < table.width; ++x, source += table.depth, row += kTableDepth) {
            std::memcpy(row, source, kTableDepth);
        }
    }
    mImgTab2D->set(kTableWidth, kTableHeight, kFormatRgb, mFilterBitmap->buffer);
}

void ImageFilterTableGL::updateParameters() {
    ImageFilterBaseGL::updateParameters();
    mProgram->setSourceTarget("tex_frame", 1, mImgTab2D);
}

void ImageFilterTableGL::release() {
    if (mImgTab2D.get() != nullptr) {
        mImgTab2D->recycle();
        mImgTab2D.clear();
    }
    // Freed here and only here: a filter that is deleted without release() keeps its table's memory for good.
    free_table(mFilterBitmap);
    mFilterBitmap = nullptr;
    ImageFilterBaseGL::release();
}

const FilterDescription kImageFilterTable = {
    "ImageFilterTable", "Colours mapped through a lookup table",
    kFragmentShader,    kParameters,
    kUniforms,          []() -> ImageFilterBaseGL* { return new (std::nothrow) Filter(); },
};
