#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "applications/filters/gpu_image_filter_factory.h"
#include "tests/applications/filters/reference_filters.h"
#include "tests/support/log_capture.h"

namespace {

struct Setting {
    const char* name;
    float value;
};

struct Golden {
    const char* filter;
    std::vector<Setting> settings;
    ReferenceParameters seen;  // what the shader must see after these settings
};

// Each filter at its defaults and at the corners of its parameters.
const Golden kGoldens[] = {
    {"None", {}, {}},
    {"Temperature", {}, {}},
    {"Xray", {}, {}},
    {"Table", {}, {.strength = 1.0}},
    {"Table", {{"mStrength", 0.0F}}, {.strength = 0.0}},
    {"Table", {{"mStrength", 0.4F}}, {.strength = 0.4F}},
    {"Distorted", {}, {.strength = 4.0, .radius = 0.2F, .centerx = 0.5, .centery = 0.5}},
    {"Distorted",
     {{"mRadius", 0.7F}, {"mStrength", -1.5F}, {"mCenterx", 0.4F}, {"mCentery", 1.7F}},
     {.strength = -1.5, .radius = 0.49, .centerx = 0.4F, .centery = 1.0}},
    {"Distorted",
     {{"mRadius", 0.5F}, {"mCenterx", -2.0F}, {"mCentery", 0.25F}},
     {.strength = 4.0, .radius = 0.25, .centerx = 0.0, .centery = 0.25}},
    {"Extrusion", {}, {.strength = 0.2F, .centerx = 0.5, .centery = 0.5, .zoom = 1.0}},
    {"Extrusion",
     {{"mStrength", 0.0F}, {"mCenterx", 0.3F}, {"mCentery", 0.9F}},
     {.strength = 0.0, .centerx = 0.3F, .centery = 0.9F, .zoom = 1.0}},
    // zoom 0 stands for the automatic one: the short side over the long side of the output.
    {"Extrusion", {{"mStrength", -0.1F}}, {.strength = -0.1F, .centerx = 0.5, .centery = 0.5, .zoom = 0.0}},
    {"Mirror", {}, {.centerx = 1.0, .centery = 0.5}},
    {"Mirror", {{"mCenterx", 0.3F}}, {.centerx = 0.3F, .centery = 1.0}},
    {"Mirror", {{"mCenterx", 0.3F}, {"mCentery", 0.6F}}, {.centerx = 1.0, .centery = 0.6F}},
    {"Timetunnel", {}, {.radius = 0.2F}},
    {"Timetunnel", {{"mRadius", 0.3F}}, {.radius = 0.09}},
    {"Timetunnel", {{"mRadius", 0.0F}}, {.radius = 0.0}},
};

// The table that maps each colour to itself, as the Table filter starts with.
ReferenceImage identity_table() {
    ReferenceImage table{4096, 64, 3, {}};
    for (int i = 0; i < 64 * 64 * 64; ++i) {
        for (const int level : {i / 4096, i / 64 % 64, i % 64}) {
            table.pixels.push_back(static_cast<unsigned char>(static_cast<float>(level) * (255.0F / 63.0F)));
        }
    }
    return table;
}

void expect_close(const ReferenceImage& expected, const unsigned char* pixels, int largest, double mean) {
    int worst = 0;
    double sum = 0;
    for (size_t i = 0; i < expected.pixels.size(); ++i) {
        const int difference = std::abs(pixels[i] - expected.pixels[i]);
        worst = std::max(worst, difference);
        sum += difference;
    }
    EXPECT_LE(worst, largest);
    EXPECT_LE(sum / static_cast<double>(expected.pixels.size()), mean);
}

std::string trace(const Golden& golden, int width, int height) {
    std::string text = std::string(golden.filter) + " " + std::to_string(width) + " x " + std::to_string(height);
    for (const Setting& setting : golden.settings) {
        text += std::string(" ") + setting.name + "=" + std::to_string(setting.value);
    }
    return text;
}

ReferenceImage expected_picture(const Golden& golden, const ReferenceImage& input, int width, int height,
                                const ReferenceCorners& corners) {
    static const ReferenceImage kIdentity = identity_table();
    ReferenceParameters seen = golden.seen;
    seen.table = &kIdentity;
    if (std::string(golden.filter) == "Extrusion" && seen.zoom == 0) {
        seen.zoom = static_cast<double>(std::min(width, height)) / std::max(width, height);
    }
    return reference_filter(golden.filter, seen, input, width, height, corners);
}

void apply(const Golden& golden, ImageFilterBaseGL& filter) {
    for (const Setting& setting : golden.settings) {
        float value = setting.value;
        filter.setParameters(setting.name, &value);
    }
}

auto_ptr<ImageFilterBaseGL> create(const char* shortName) {
    return ImageFilterFactory::createFilter((std::string("ImageFilter") + shortName).c_str());
}

class Filters : public testing::Test {
  protected:
    LogCapture m_Log;
};

TEST_F(Filters, ProcessMatchesTheReferenceAtDefaultsAndCorners) {
    const int sizes[][2] = {{64, 48}, {61, 97}};
    for (const Golden& golden : kGoldens) {
        auto_ptr<ImageFilterBaseGL> filter = create(golden.filter);
        ASSERT_NE(filter.get(), nullptr);
        filter->initEngine();
        ASSERT_NE(filter->setupGraphics(1), 0);
        apply(golden, *filter);
        for (const auto& size : sizes) {
            SCOPED_TRACE(trace(golden, size[0], size[1]));
            const ReferenceImage input = smooth_picture(size[0], size[1]);
            std::vector<unsigned char> pixels = input.pixels;
            filter->process(pixels.data(), size[0], size[1]);
            // Each golden picture's tolerance is a few steps: shaders run in medium precision on 8-bit textures.
            expect_close(expected_picture(golden, input, size[0], size[1], kCameraCorners), pixels.data(), 3, 0.6);
            // The automatic zoom stays with the first size that it saw.
            if (std::string(golden.filter) == "Extrusion") {
                break;
            }
        }
    }
}

TEST_F(Filters, TurnsCameraFramesAndKeepsWhatIsUpright) {
    // Corners of the buffer, in order first row left, first row right, last row left, last row right.
    const auto corners = [](const std::vector<unsigned char>& pixels, int width, int height) {
        std::vector<int> red;
        for (const int at : {0, width - 1, (height - 1) * width, height * width - 1}) {
            red.push_back(pixels[static_cast<size_t>(at) * 4]);
        }
        return red;
    };
    std::vector<unsigned char> picture(8 * 6 * 4, 0);
    picture[0] = 10;
    picture[7 * 4] = 20;
    picture[5 * 8 * 4] = 30;
    picture[(6 * 8 - 1) * 4] = 40;
    auto_ptr<ImageFilterBaseGL> filter = create("None");
    filter->initEngine();
    ASSERT_NE(filter->setupGraphics(1), 0);

    std::vector<unsigned char> camera = picture;
    filter->process(camera.data(), 8, 6);
    // Reversed along both axes and turned: the last pixel comes first. The turn squeezes 8 columns into 6 rows, so
    // neighbours mix in; order is what counts.
    const std::vector<int> turned = corners(camera, 8, 6);
    EXPECT_GT(turned[0], turned[1]);
    EXPECT_GT(turned[1], turned[2]);
    EXPECT_GT(turned[2], turned[3]);

    m_Log.clear();
    float upright[8] = {0, 0, 1, 0, 0, 1, 1, 1};
    filter->setParameters("mTexVertices", upright);
    EXPECT_EQ(m_Log.lines(), std::vector<std::string>{
                                 "mTexVertices: 0.000000, 0.000000, 1.000000, 0.000000, 0.000000, 1.000000, 1.000000, "
                                 "1.000000"});
    std::vector<unsigned char> straight = picture;
    filter->process(straight.data(), 8, 6);
    EXPECT_EQ(straight, picture);
}

TEST_F(Filters, TakesALookupTableOfTheRightSizeOnly) {
    auto_ptr<ImageFilterBaseGL> filter = create("Table");
    std::vector<unsigned char> rgba(4096 * 64 * 4);
    for (size_t i = 0; i < rgba.size(); i += 4) {
        rgba[i] = static_cast<unsigned char>(255 - 4 * (i / 4 / 4096));
        rgba[i + 1] = 100;
        rgba[i + 2] = static_cast<unsigned char>(4 * (i / 4 % 64));
        rgba[i + 3] = 7;
    }
    FilterBitmap table{rgba.data(), 4096, 64, 4, 4096 * 4};
    // Before the filter is set up there is nothing to fill.
    filter->setParameters("mFilterBitmap", &table);
    filter->initEngine();
    ASSERT_NE(filter->setupGraphics(1), 0);
    const ReferenceImage input = smooth_picture(33, 21);

    ReferenceImage mapped{4096, 64, 3, {}};
    for (size_t i = 0; i < rgba.size(); ++i) {
        if (i % 4 != 3) {
            mapped.pixels.push_back(rgba[i]);
        }
    }
    const ReferenceImage identity = identity_table();
    FilterBitmap wrong[] = {table, table, table};
    wrong[0].width = 64;
    wrong[1].height = 4096;
    wrong[2].buffer = nullptr;
    for (FilterBitmap& bitmap : wrong) {
        filter->setParameters("mFilterBitmap", &bitmap);
    }
    filter->setParameters("mFilterBitmap", nullptr);
    std::vector<unsigned char> pixels = input.pixels;
    filter->process(pixels.data(), 33, 21);
    expect_close(reference_filter("Table", {.strength = 1, .table = &identity}, input, 33, 21, kCameraCorners),
                 pixels.data(), 3, 0.6);

    filter->setParameters("mFilterBitmap", &table);
    pixels = input.pixels;
    filter->process(pixels.data(), 33, 21);
    expect_close(reference_filter("Table", {.strength = 1, .table = &mapped}, input, 33, 21, kCameraCorners),
                 pixels.data(), 3, 0.6);
    filter->release();
    filter->release();
}

TEST_F(Filters, ParametersAreKnownByTheirExactNames) {
    EXPECT_EQ(ImageFilterFactory::filters().size(), 8U);
    for (const FilterDescription* description : ImageFilterFactory::filters()) {
        const auto_ptr<ImageFilterBaseGL> filter(ImageFilterFactory::createFilter(description->name));
        ASSERT_NE(filter.get(), nullptr) << description->name;
        EXPECT_STREQ(filter->getFilterName(), description->name);
        for (const FilterParameter& parameter : description->parameters) {
            EXPECT_EQ(filter->getParameterType(parameter.name), parameter.type);
        }
        EXPECT_EQ(filter->getParameterType("mTextureMatrix"), PARAMETER_TYPE_FLOAT_ARRAY);
        for (const char* unknown : {"", "mZoom", "mstrength", "mStrength ", static_cast<const char*>(nullptr)}) {
            EXPECT_EQ(filter->getParameterType(unknown), PARAMETER_TYPE_INVALID);
            float value = 1;
            filter->setParameters(unknown, &value);
        }
    }
    const auto_ptr<ImageFilterBaseGL> table(ImageFilterFactory::createFilter("ImageFilterTable"));
    EXPECT_EQ(table->getParameterType("mFilterBitmap"), PARAMETER_TYPE_BITMAP);
    EXPECT_EQ(table->getParameterType("mRadius"), PARAMETER_TYPE_INVALID);
    for (const char* name : {"ImageFilterBase", "imagefilternone", "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(ImageFilterFactory::createFilter(name), nullptr);
    }
}

TEST_F(Filters, WorksWithoutWhatItNeedsByDoingNothing) {
    std::vector<unsigned char> pixels(16, 9);
    auto_ptr<ImageFilterBaseGL> filter = create("None");
    filter->render();
    filter->process(pixels.data(), 2, 2);
    EXPECT_EQ(pixels, std::vector<unsigned char>(16, 9));
    // External input has no framebuffer of its own, so bitmaps are not processed.
    filter->initEngine();
    EXPECT_NE(filter->setupGraphics(0), 0);
    filter->process(pixels.data(), 2, 2);
    EXPECT_EQ(pixels, std::vector<unsigned char>(16, 9));
}

}  // namespace
