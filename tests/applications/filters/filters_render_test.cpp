// SPDX-License-Identifier: Apache-2.0
// The native methods of the Java renderer, with bitmaps, texts and arrays of a Java virtual machine.
#include <array>
#include <bit>
#include <string>
#include <vector>

#include "tests/applications/filters/reference_filters.h"
#include "tests/support/gl_surface.h"
#include "tests/support/jvm.h"
#include "tests/support/native_methods.h"
#include "tests/support/standard_error.h"

namespace {

constexpr char kPrefix[] = "Java_com_tervo_media_effects_renderer_render_FiltersRender_";

using Lines = std::vector<std::string>;

std::string pointer(jlong handle) {
    return handle == 0 ? "(nil)" : testing::PrintToString(reinterpret_cast<void*>(handle));
}

std::string entry(const std::string& rest) {
    return kPrefix + rest;
}

// Eight texture coordinates; a filter logs them when they are set.
using Vertices = std::array<float, 8>;

std::string vertices_line(const Vertices& vertices) {
    std::string line = "mTexVertices: ";
    for (const float value : vertices) {
        line += std::to_string(value) + ", ";
    }
    return line.substr(0, line.size() - 2);
}

template <typename Action>
Lines logged(const Action& action) {
    StandardErrorCapture capture;
    action();
    return capture.log_lines();
}

class FiltersRender : public JvmTest {
  protected:
    template <typename Method, typename... Arguments>
    auto native(Method method, Arguments... arguments) {
        return method(env, nullptr, arguments...);
    }
    jlong create(const char* name) { return native(FILTERS(nativeCreate), string(name)); }
    jlong create_on_surface(const char* name, jint target) {
        return native(FILTERS(nativeOnSurfaceCreated), string(name), target);
    }
    void destroy(jlong handle) { native(FILTERS(nativeOnSurfaceDestroyed), handle); }
    jint type_of(jlong handle, const char* key) { return native(FILTERS(nativeGetParameterType), handle, string(key)); }
    void set_texture(jlong handle, GLuint texture, const ReferenceImage& input) {
        native(FILTERS(nativeSetTexture), handle, static_cast<jint>(texture), input.width, input.height, input.width,
               input.height);
    }
    void set_table(jlong handle, const char* key, jobject bitmap) {
        native(FILTERS(nativeSetParametersBitmap), handle, string(key), bitmap);
        EXPECT_EQ(bitmap == nullptr ? 0 : lock_count(bitmap), 0);
    }

    template <size_t Count>
    jfloatArray floats(const std::array<float, Count>& values) {
        const jfloatArray array = env->NewFloatArray(static_cast<jsize>(Count));
        env->SetFloatArrayRegion(array, 0, static_cast<jsize>(Count), values.data());
        return array;
    }

    std::vector<unsigned char> processed(jlong handle, const ReferenceImage& input) {
        const jobject bitmap = new_bitmap(input.width, input.height, input.pixels);
        native(FILTERS(nativeProcess), handle, bitmap);
        EXPECT_EQ(lock_count(bitmap), 0);
        return bitmap_pixels(bitmap);
    }
};

// A table whose rows and columns run against the identity.
ReferenceImage inverting_table() {
    ReferenceImage table{4096, 64, 4, {}};
    for (int i = 0; i < 4096 * 64; ++i) {
        for (const int value : {255 - 4 * (i / 4096), 100, 4 * (i % 64), 7}) {
            table.pixels.push_back(static_cast<unsigned char>(value));
        }
    }
    return table;
}

// A filter reads the bytes of any value as its own type, here as floats, with zeros behind a value that is too short.
TEST_F(FiltersRender, EachSetterBringsItsValueToTheFilter) {
    const jlong handle = create("ImageFilterNone");
    const auto expect_set = [&](const char* type, auto setter, auto value, const Vertices& seen) {
        EXPECT_EQ(logged([&] { native(setter, handle, string("mTexVertices"), value); }),
                  (Lines{entry("nativeSetParameters") + type, vertices_line(seen)}));
    };
    const Vertices mirrored = {1, 0, 0, 0, 1, 1, 0, 1};
    Vertices pointed = {3, 4};
    expect_set("Double", FILTERS(nativeSetParametersDouble), (std::bit_cast<double>(std::array<float, 2>{-3.0F, 1.0F})),
               {-3, 1});
    expect_set("Float", FILTERS(nativeSetParametersFloat), -1.5F, {-1.5F});
    expect_set("Boolean", FILTERS(nativeSetParametersBoolean), jboolean{JNI_TRUE}, {});
    expect_set("Integer", FILTERS(nativeSetParametersInteger), std::bit_cast<jint>(2.5F), {2.5F});
    expect_set("Long", FILTERS(nativeSetParametersLong), reinterpret_cast<jlong>(pointed.data()), pointed);
    expect_set("FloatArray", FILTERS(nativeSetParametersFloatArray), floats(mirrored), mirrored);
    expect_set("BooleanArray", FILTERS(nativeSetParametersBooleanArray), env->NewBooleanArray(32), {});
    expect_set("IntegerArray", FILTERS(nativeSetParametersIntegerArray), env->NewIntArray(8), {});
    expect_set("DoubleArray", FILTERS(nativeSetParametersDoubleArray), env->NewDoubleArray(4), {});
    destroy(handle);
}

TEST_F(FiltersRender, SetsNothingFromWhatIsMissingShortOrUnknown) {
    const ReferenceImage input = smooth_picture(33, 21);
    const jlong handle = create("ImageFilterDistorted");
    const std::vector<unsigned char> before = processed(handle, input);
    const Lines lines = logged([&] {
        const jstring vertices = string("mTexVertices");
        native(FILTERS(nativeSetParametersBooleanArray), handle, vertices, nullptr);
        native(FILTERS(nativeSetParametersIntegerArray), handle, vertices, nullptr);
        native(FILTERS(nativeSetParametersFloatArray), handle, vertices, nullptr);
        native(FILTERS(nativeSetParametersDoubleArray), handle, vertices, nullptr);
        native(FILTERS(nativeSetParametersFloatArray), handle, vertices, env->NewFloatArray(7));
        native(FILTERS(nativeSetParametersFloatArray), handle, string("mTextureMatrix"), env->NewFloatArray(15));
        native(FILTERS(nativeSetParametersFloatArray), handle, string("mStrength"), env->NewFloatArray(0));
        native(FILTERS(nativeSetParametersBooleanArray), handle, string("mPosVertices"), env->NewBooleanArray(31));
        for (const char* key : {static_cast<const char*>(nullptr), "", "mZoom", "mstrength"}) {
            native(FILTERS(nativeSetParametersFloat), handle, string(key), 1.0F);
            native(FILTERS(nativeSetParametersFloatArray), handle, string(key), env->NewFloatArray(8));
            native(FILTERS(nativeSetParametersLong), handle, string(key), 8);
        }
        native(FILTERS(nativeSetParametersLong), handle, string("mStrength"), 0);
    });
    EXPECT_EQ(lines.size(), 4U + 4 + 4 * 3 + 1) << "only the names of the methods";
    EXPECT_EQ(processed(handle, input), before);

    EXPECT_EQ(type_of(handle, "mStrength"), 5);
    EXPECT_EQ(type_of(handle, nullptr), 0);
    EXPECT_EQ(type_of(0, "mStrength"), -1);
    destroy(handle);
}

TEST_F(FiltersRender, TakesALookupTableAsABitmap) {
    const ReferenceImage input = smooth_picture(45, 32);
    const ReferenceImage inverting = inverting_table();
    const jobject right = new_bitmap(4096, 64, inverting.pixels);
    const jobject wrong = new_bitmap(64, 64, std::vector<unsigned char>(64 * 64 * 4, 9));
    const jobject recycled = new_bitmap(4096, 64, inverting.pixels);
    call_void(recycled, "recycle", "()V");
    const jlong handle = create("ImageFilterTable");
    EXPECT_EQ(type_of(handle, "mFilterBitmap"), 10);
    const std::vector<unsigned char> before = processed(handle, input);
    const Lines lines = logged([&] {
        set_table(handle, "mFilterBitmap", wrong);
        set_table(handle, "mFilterBitmap", recycled);
        set_table(handle, nullptr, right);
        set_table(0, "mFilterBitmap", right);
        set_table(handle, "mFilterBitmap", nullptr);
    });
    Lines expected;
    for (const auto& [given, last] : {std::pair(handle, "3"), {handle, "3"}, {handle, "3"}, {0, "3"}, {handle, "2"}}) {
        for (const char* number : {"1", last}) {
            expected.push_back(entry("nativeSetParametersBitmap ") + number +
                               "   pImageFilterBaseGL:" + pointer(given));
        }
    }
    EXPECT_EQ(lines, expected);
    // Numbers that would make a table's description are no table.
    native(FILTERS(nativeSetParametersFloatArray), handle, string("mFilterBitmap"),
           floats(std::bit_cast<std::array<float, 6>>(std::array<jint, 6>{8, 0, 4096, 64, 4, 4096 * 4})));
    EXPECT_EQ(processed(handle, input), before);

    set_table(handle, "mFilterBitmap", right);
    expect_close(reference_filter("Table", {.strength = 1, .table = &inverting}, input, 45, 32),
                 processed(handle, input), 3);
    destroy(handle);
}

// A program that is in use outlives its deletion.
int living_objects() {
    glUseProgram(0);
    int count = 0;
    for (GLuint name = 1; name < 32; ++name) {
        count += glIsTexture(name) + glIsBuffer(name) + glIsFramebuffer(name) + glIsProgram(name);
    }
    return count;
}

TEST_F(FiltersRender, DrawsOnTheApplicationsSurface) {
    const ReferenceImage input = smooth_picture(40, 30);
    const jobject bitmap = new_bitmap(40, 30, input.pixels);
    GlSurface surface(40, 30);
    jlong handle = 0;
    // For the camera, then for textures.
    for (const Lines& steps : {Lines{"1", "1  1", "1  2", "1  5", "4"}, Lines{"1", "4"}}) {
        destroy(handle);
        const Lines lines = logged([&] { handle = create_on_surface("ImageFilterXray", steps.size() == 2 ? 1 : 0); });
        Lines expected = {entry("nativeOnSurfaceCreated  1"), "NULL != mGPUContext.get()----------"};
        for (const std::string& step : steps) {
            expected.push_back("ImageFilterBaseGL::setupGraphics  " + step + " this:" + pointer(handle));
        }
        expected.push_back("pImageFilterBaseGL:" + pointer(handle));
        EXPECT_EQ(lines, expected);
    }
    EXPECT_EQ(logged([&] {
                  native(FILTERS(nativeSetBitmap), handle, bitmap, 40, 30);
                  native(FILTERS(nativeOnDrawFrame), handle);
                  type_of(handle, "mStrength");
              }),
              (Lines{entry("nativeSetBitmap pImageFilterBaseGL:") + pointer(handle), entry("nativeGetParameterType")}));
    const ReferenceImage expected = reference_filter("Xray", {}, input, 40, 30);
    expect_close(expected, surface.pixels(), 3);

    // Neither an empty size nor a bitmap without pixels takes the input away.
    const jobject recycled = new_bitmap(40, 30, input.pixels);
    call_void(recycled, "recycle", "()V");
    native(FILTERS(nativeSetBitmap), handle, bitmap, 0, 30);
    native(FILTERS(nativeSetBitmap), handle, bitmap, 40, -1);
    native(FILTERS(nativeSetBitmap), handle, recycled, 40, 30);
    native(FILTERS(nativeSetBitmap), handle, nullptr, 40, 30);
    native(FILTERS(nativeProcess), handle, bitmap);
    EXPECT_EQ(bitmap_pixels(bitmap), input.pixels) << "a filter without an engine of its own processes no bitmap";
    EXPECT_EQ(lock_count(bitmap) + lock_count(recycled), 0);
    glClear(GL_COLOR_BUFFER_BIT);
    native(FILTERS(nativeOnDrawFrame), handle);
    expect_close(expected, surface.pixels(), 3);
    EXPECT_EQ(logged([&] { destroy(handle); }),
              Lines{entry("nativeOnSurfaceDestroyed pImageFilterBaseGL:") + pointer(handle)});
    EXPECT_EQ(living_objects(), 0);

    const GLuint texture = new_texture(40, 30, input.pixels.data());
    handle = create_on_surface("ImageFilterXray", GL_TEXTURE_2D);
    EXPECT_EQ(logged([&] { set_texture(handle, texture, input); }),
              (Lines{entry("nativeSetTexture  1 pImageFilterBaseGL:") + pointer(handle),
                     entry("nativeSetTexture  2 pImageFilterBaseGL:") + pointer(handle)}));
    glClear(GL_COLOR_BUFFER_BIT);
    native(FILTERS(nativeOnDrawFrame), handle);
    expect_close(expected, surface.pixels(), 3);
    destroy(handle);
    EXPECT_EQ(living_objects(), 1) << "the caller's texture";
    EXPECT_EQ(glIsTexture(texture), GL_TRUE);
    glDeleteTextures(1, &texture);
}

TEST_F(FiltersRender, WithoutAFilterOrPixelsOnlyLogs) {
    const ReferenceImage input = smooth_picture(8, 6);
    const jobject bitmap = new_bitmap(8, 6, input.pixels);
    const Lines lines = logged([&] {
        for (const char* name : {static_cast<const char*>(nullptr), "", "ImageFilterBase"}) {
            EXPECT_EQ(create(name), 0);
        }
        EXPECT_EQ(create_on_surface(nullptr, 1), 0);
        EXPECT_EQ(create_on_surface("ImageFilterBase", 0), 0);
        set_texture(0, 1, input);
        native(FILTERS(nativeSetBitmap), 0, bitmap, 8, 6);
        native(FILTERS(nativeOnDrawFrame), 0);
        native(FILTERS(nativeProcess), 0, bitmap);
        native(FILTERS(nativeSetParametersFloat), 0, string("mStrength"), 1.0F);
        native(FILTERS(nativeSetParametersFloatArray), 0, string("mTexVertices"), env->NewFloatArray(8));
        native(FILTERS(nativeSetParametersLong), 0, string("mStrength"), 8);
        destroy(0);
    });
    const std::string created = entry("nativeOnSurfaceCreated  1");
    const std::string null = "pImageFilterBaseGL:" + pointer(0);
    EXPECT_EQ(lines, (Lines{created, null, created, null, entry("nativeSetTexture  1 ") + null,
                            entry("nativeSetTexture  2 ") + null, entry("nativeSetBitmap ") + null,
                            entry("nativeSetParametersFloat"), entry("nativeSetParametersFloatArray"),
                            entry("nativeSetParametersLong"), entry("nativeOnSurfaceDestroyed ") + null}));
    EXPECT_EQ(bitmap_pixels(bitmap), input.pixels);

    const jlong handle = create("ImageFilterNone");
    call_void(bitmap, "recycle", "()V");
    native(FILTERS(nativeProcess), handle, bitmap);
    native(FILTERS(nativeProcess), handle, nullptr);
    EXPECT_EQ(lock_count(bitmap), 0);
    expect_close(reference_filter("None", {}, input, 8, 6), processed(handle, input), 3);
    EXPECT_NE(eglGetCurrentContext(), EGL_NO_CONTEXT);
    destroy(handle);
    EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
}

}  // namespace
