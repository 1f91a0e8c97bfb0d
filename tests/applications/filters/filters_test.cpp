// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "applications/filters/gpu_image_filter_factory.h"
#include "frameworks/gpu/program_cache.h"
#include "tests/applications/filters/reference_filters.h"
#include "tests/support/gl_recorder.h"
#include "tests/support/gl_surface.h"
#include "tests/support/log_capture.h"

extern const FilterDescription kImageFilterSepia;

// Before the driver's.
extern "C" __attribute__((visibility("default"))) void glShaderSource(GLuint shader, GLsizei count,
                                                                      const GLchar* const* texts, const GLint* lengths);

namespace {

using Setting = std::pair<const char*, float>;

struct Golden {
    const char* filter;
    std::vector<Setting> settings;
    ReferenceParameters seen;  // what the shader must see after these settings
    // Largest difference of a byte, in steps. Texture units weigh neighbours in 256 steps, and a shader multiplies what
    // that leaves: the slope of the temperature ramp is 8.
    int largest = 2;
    // What a driver that computes in 16 bits, as the GPUs of phones do, may add.
    int half = 2;
};

// Each filter at its defaults and at the corners of its parameters.
const Golden kGoldens[] = {
    {"None", {}, {}},
    {"Temperature", {}, {}, 8},
    {"Xray", {}, {}},
    {"Table", {}, {.strength = 1.0}, 2, 9},
    {"Table", {{"mStrength", 0.0F}}, {.strength = 0.0}},
    {"Table", {{"mStrength", 0.4F}}, {.strength = 0.4F}, 2, 4},
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
    // zoom 0 stands for the automatic one: the short side over the long side of the output. The centre lies between
    // pixels: at the centre itself the power of 0 is infinite, and times an offset of 0 it is anything.
    {"Extrusion",
     {{"mStrength", -0.1F}, {"mCenterx", 0.4F}},
     {.strength = -0.1F, .centerx = 0.4F, .centery = 0.5, .zoom = 0.0}},
    {"Mirror", {}, {.centerx = 1.0, .centery = 0.5}},
    {"Mirror", {{"mCenterx", 0.3F}}, {.centerx = 0.3F, .centery = 1.0}},
    {"Mirror", {{"mCenterx", 0.3F}, {"mCentery", 0.6F}}, {.centerx = 1.0, .centery = 0.6F}},
    {"Timetunnel", {}, {.radius = 0.2F}},
    {"Timetunnel", {{"mRadius", 0.3F}}, {.radius = 0.09}},
    {"Timetunnel", {{"mRadius", 0.0F}}, {.radius = 0.0}},
};

// A filter that is released before it is deleted, without which the Table filter keeps its table's memory for good.
class OwnedFilter : public auto_ptr<ImageFilterBaseGL> {
  public:
    using auto_ptr<ImageFilterBaseGL>::auto_ptr;
    ~OwnedFilter() override {
        if (get() != nullptr) {
            get()->release();
        }
    }
};

// Whether shaders shall say highp where the library's say mediump.
bool gForcesHighp = false;

// Where the shaders that a driver gets are kept, if they shall be.
const char* gShaderFolder = nullptr;

// For this target, or for process(), with an engine of its own.
constexpr GLenum kOffScreen = 1;

void set_up(ImageFilterBaseGL& filter, GLenum target, const std::vector<Setting>& settings = {}) {
    if (target == kOffScreen) {
        filter.initEngine();
    }
    EXPECT_NE(filter.setupGraphics(target), 0);
    for (const auto& [name, setting] : settings) {
        float value = setting;
        filter.setParameters(name, &value);
    }
}

std::vector<unsigned char> processed(ImageFilterBaseGL& filter, const ReferenceImage& input) {
    std::vector<unsigned char> pixels = input.pixels;
    filter.process(pixels.data(), input.width, input.height);
    return pixels;
}

class Probe : public ImageFilterBaseGL {
  protected:
    const FilterDescription& description() const override {
        static const FilterDescription kProbe = {
            "Probe", "", "void main() { gl_FragColor = vec4(fract(texture2D(tex_sampler, v_texcoord).r * 2048.5)); }",
            {},      {}, nullptr};
        return kProbe;
    }
};

// Whether the driver computes mediump in 16 bits, which have no halves above 2048. The language asks for 10 bits only.
bool is_half_precision() {
    static const bool kIsHalf = [] {
        const OwnedFilter probe(new Probe);
        set_up(*probe, kOffScreen);
        return processed(*probe, {1, 1, 4, {255, 255, 255, 255}})[0] == 0;
    }();
    return kIsHalf;
}

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

// What came out of the golden's filter, drawn at this size.
void expect_golden(const Golden& golden, const ReferenceImage& input, int width, int height,
                   const std::vector<unsigned char>& pixels) {
    static const ReferenceImage kIdentity = identity_table();
    SCOPED_TRACE(testing::Message() << golden.filter << " of row " << &golden - kGoldens << ", " << width << " x "
                                    << height);
    ReferenceParameters seen = golden.seen;
    seen.table = &kIdentity;
    if (std::string(golden.filter) == "Extrusion" && seen.zoom == 0) {
        seen.zoom = static_cast<double>(std::min(width, height)) / std::max(width, height);
    }
    const bool isHalf = is_half_precision();
    expect_close(reference_filter(golden.filter, seen, input, width, height), pixels,
                 golden.largest + (isHalf ? golden.half : 0), isHalf ? 1.5 : 0.8);
}

OwnedFilter create(const char* shortName) {
    return {ImageFilterFactory::createFilter((std::string("ImageFilter") + shortName).c_str())};
}

std::vector<unsigned char> processed(const Golden& golden, const ReferenceImage& input) {
    const OwnedFilter filter = create(golden.filter);
    set_up(*filter, kOffScreen, golden.settings);
    return processed(*filter, input);
}

struct TemporaryFolder {
    TemporaryFolder() { EXPECT_NE(mkdtemp(path.data()), nullptr); }
    ~TemporaryFolder() { std::filesystem::remove_all(path); }

    std::string path = testing::TempDir() + "korvane_filters_XXXXXX";
};

class Filters : public testing::Test {
  protected:
    // Before a filter has this thread's context.
    const bool m_IsHalf = is_half_precision();
    LogCapture m_Log;
};

TEST_F(Filters, ProcessMatchesTheReferenceAtDefaultsAndCorners) {
    for (const Golden& golden : kGoldens) {
        for (const auto& [width, height] : {std::pair(64, 48), {61, 97}}) {
            const ReferenceImage input = smooth_picture(width, height);
            expect_golden(golden, input, width, height, processed(golden, input));
        }
    }
}

// The table that a user of a phone would like to see: each filter as it is against the same shader in 32 bits.
TEST_F(Filters, HalfPrecisionStaysNear) {
    const ReferenceImage input = smooth_picture(256, 192);
    std::printf("mediump has %s bits\nfilter       row  largest\n", m_IsHalf ? "16" : "32");
    for (const Golden& golden : kGoldens) {
        const std::vector<unsigned char> asIs = processed(golden, input);
        gForcesHighp = true;
        const std::vector<unsigned char> high = processed(golden, input);
        gForcesHighp = false;
        int worst = 0;
        for (size_t i = 0; i < high.size(); ++i) {
            worst = std::max(worst, std::abs(asIs[i] - high[i]));
        }
        std::printf("%-12s %3td  %7d\n", golden.filter, &golden - kGoldens, worst);
        EXPECT_LE(worst, m_IsHalf ? golden.half : 0) << golden.filter;
    }
}

TEST_F(Filters, TurnsCameraFramesAndKeepsWhatIsUpright) {
    ReferenceImage picture{2, 2, 4, std::vector<unsigned char>(16)};
    std::iota(picture.pixels.begin(), picture.pixels.end(), static_cast<unsigned char>(10));
    // Rows become columns, both reversed: the last pixel comes first, and the first row's end stays in its place.
    std::vector<unsigned char> turned = picture.pixels;
    std::swap_ranges(turned.begin(), turned.begin() + 4, turned.end() - 4);
    const OwnedFilter filter = create("None");
    set_up(*filter, kOffScreen);
    EXPECT_EQ(processed(*filter, picture), turned);
    float upright[8] = {0, 0, 1, 0, 0, 1, 1, 1};
    filter->setParameters("mTexVertices", upright);
    EXPECT_EQ(processed(*filter, picture), picture.pixels);
}

TEST_F(Filters, RenderDrawsTexturesAndCameraTexturesToTheSurface) {
    for (const auto& [width, height] : {std::pair(96, 64), {75, 51}}) {
        GlSurface surface(width, height);
        const ReferenceImage input = smooth_picture(61, 45);
        GLuint plain = new_texture(input.width, input.height, input.pixels.data());
        {
            const ExternalTexture camera(plain);
            for (const Golden& golden : kGoldens) {
                for (const auto& [target, name] : {std::pair(GLenum{GL_TEXTURE_2D}, plain), {0, camera.name()}}) {
                    SCOPED_TRACE(target == 0 ? "external" : "2D");
                    const OwnedFilter filter = create(golden.filter);
                    set_up(*filter, target, golden.settings);
                    filter->setTexture(static_cast<GLint>(name), input.width, input.height, width, height);
                    // A second texture's name is not taken.
                    filter->setTexture(12345, input.width, input.height, width, height);
                    glClear(GL_COLOR_BUFFER_BIT);
                    filter->render();
                    expect_golden(golden, input, width, height, surface.pixels());
                }
            }
        }
        EXPECT_EQ(glIsTexture(plain), GL_TRUE) << "the caller's texture survives its filters";
        glDeleteTextures(1, &plain);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    }
}

TEST_F(Filters, AnotherCompilerTakesAllShadersWithoutAWarning) {
    const TemporaryFolder folder;
    gShaderFolder = folder.path.c_str();
    const GlSurface surface(16, 16);
    for (const FilterDescription* description : ImageFilterFactory::filters()) {
        for (const GLenum target : {GLenum{0}, GLenum{GL_TEXTURE_2D}}) {
            const OwnedFilter filter(description->create());
            set_up(*filter, target);
            filter->render();
        }
    }
    gShaderFolder = nullptr;
    const auto shaders = std::distance(std::filesystem::directory_iterator(folder.path), {});
    EXPECT_EQ(static_cast<size_t>(shaders), 2 * 2 * ImageFilterFactory::filters().size());
    // It names each file, and what it has to say stands behind a colon.
    const std::string command = "cd " + folder.path + " && glslangValidator *.vert *.frag > said && ! grep : said";
    EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST_F(Filters, TheGuidesExampleRuns) {
    const OwnedFilter filter(kImageFilterSepia.create());
    set_up(*filter, kOffScreen, {{"mStrength", 3.0F}});
    // Luma 124; strength is clamped to 1.
    expect_close({1, 1, 4, {124, 99, 74, 77}}, processed(*filter, {1, 1, 4, {200, 100, 50, 77}}), 1, 1);
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
    EXPECT_EQ(create("Table")->getParameterType("mFilterBitmap"), PARAMETER_TYPE_BITMAP);
    EXPECT_EQ(create("Table")->getParameterType("mRadius"), PARAMETER_TYPE_INVALID);
    for (const char* name : {"ImageFilterBase", "imagefilternone", "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(ImageFilterFactory::createFilter(name), nullptr);
    }
}

TEST_F(Filters, WorksWithoutWhatItNeedsByDoingNothing) {
    const ReferenceImage grey{2, 2, 4, std::vector<unsigned char>(16, 9)};
    const OwnedFilter filter = create("None");
    filter->render();
    EXPECT_EQ(processed(*filter, grey), grey.pixels);
    // External input has no framebuffer of its own, so bitmaps are not processed.
    filter->initEngine();
    set_up(*filter, 0);
    EXPECT_EQ(processed(*filter, grey), grey.pixels);

    // A table comes too early before the filter is set up, and needs pixels.
    const OwnedFilter table = create("Table");
    std::vector<unsigned char> black(4096 * 64 * 4);
    FilterBitmap bitmap{black.data(), 4096, 64, 4, 4096 * 4};
    table->setParameters("mFilterBitmap", &bitmap);
    set_up(*table, kOffScreen);
    bitmap.buffer = nullptr;
    table->setParameters("mFilterBitmap", &bitmap);
    table->setParameters("mFilterBitmap", nullptr);
    EXPECT_NEAR(processed(*table, grey)[0], 9, 2);
    table->release();
    table->release();
}

TEST_F(Filters, ASecondEngineTakesThePlaceOfTheFirst) {
    for (const char* name : {"Mirror", "Table"}) {
        SCOPED_TRACE(name);
        const OwnedFilter filter = create(name);
        const ReferenceImage input = smooth_picture(12, 10);
        std::vector<unsigned char> results[2];
        for (std::vector<unsigned char>& pixels : results) {
            filter->initEngine();
            EXPECT_EQ(processed(*filter, input), input.pixels) << "not set up for the new engine";
            ASSERT_NE(filter->setupGraphics(1), 0);
            pixels = processed(*filter, input);
        }
        EXPECT_NE(results[0], input.pixels);
        EXPECT_EQ(results[0], results[1]);

        // The bytes of this picture fit no int.
        unsigned char pixel[4] = {1, 2, 3, 4};
        filter->process(pixel, std::numeric_limits<int>::max(), std::numeric_limits<int>::max());
        EXPECT_EQ(pixel[0], 1);
        // Longer than the driver's textures.
        std::vector<unsigned char> row(size_t{65500} * 4, 9);
        filter->process(row.data(), 65500, 1);
        filter->process(row.data(), 1, 65500);
        EXPECT_THAT(row, testing::Each(9));
    }
}

TEST(FiltersOnAFailingDriver, LeaveNothingBehindAndTheNextOneWorks) {
    is_half_precision();
    const ReferenceImage input = smooth_picture(16, 12);
    bool hasFailed = true;
    for (size_t n = 1; hasFailed; ++n) {
        ASSERT_LT(n, 1000U) << "calls the driver without end";
        SCOPED_TRACE(n);
        GlRecorder recorder;
        std::map<std::string, size_t> before = GlRecorder::live_names();
        {
            const OwnedFilter filter = create("Table");
            recorder.fail_call(n);
            filter->initEngine();
            filter->setupGraphics(1);
            processed(*filter, input);
        }
        hasFailed = recorder.has_failed();
        recorder.heal();
        std::map<std::string, size_t> after = GlRecorder::live_names();
        // Shaders go with their context, and the surface for which there is no context with its display.
        for (const char* maker : {"glCreateShader", "eglCreateSurface"}) {
            after.erase(maker);
            before.erase(maker);
        }
        EXPECT_EQ(after, before) << testing::PrintToString(recorder.take_calls());
        expect_golden(kGoldens[0], input, input.width, input.height, processed(kGoldens[0], input));
    }
}

TEST_F(Filters, CameraTexturesHaveProgramsOfTheirOwnInTheCache) {
    const GlSurface surface(8, 8);
    const TemporaryFolder cache;
    ASSERT_EQ(korvane::set_program_cache_directory(cache.path.c_str()), 0);
    std::ofstream(cache.path + "/ImageFilterNone_oes.osb") << "no program at all";
    for (const GLenum target : {GLenum{0}, GLenum{GL_TEXTURE_2D}}) {
        m_Log.clear();
        create("None")->setupGraphics(target);
        // Only a program from the cache is given to GL as a binary.
        EXPECT_THAT(m_Log.lines(), testing::Contains(testing::HasSubstr("glProgramBinary")).Times(target == 0 ? 1 : 0));
    }
    korvane::set_program_cache_directory(nullptr);
}

}  // namespace

void glShaderSource(GLuint shader, GLsizei /*count*/, const GLchar* const* texts, const GLint* /*lengths*/) {
    const auto driver = reinterpret_cast<decltype(&glShaderSource)>(dlsym(RTLD_NEXT, "glShaderSource"));
    // As every shader of the library: one text that ends in 0.
    std::string text = texts[0];
    if (const size_t word = text.find("mediump"); gForcesHighp && word != std::string::npos) {
        text.replace(word, 7, "highp");
    }
    if (gShaderFolder != nullptr) {
        GLint type = 0;
        glGetShaderiv(shader, GL_SHADER_TYPE, &type);
        const char* suffix = type == GL_VERTEX_SHADER ? ".vert" : ".frag";
        std::ofstream(gShaderFolder + ('/' + std::to_string(shader)) + suffix) << "#version 100\n" << text;
    }
    const GLchar* const changed = text.c_str();
    driver(shader, 1, &changed, nullptr);
}
