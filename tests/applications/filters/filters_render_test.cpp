// SPDX-License-Identifier: Apache-2.0
// The Java renderer's filters, called from Java in the library that an application loads.
#include <algorithm>
#include <array>
#include <bit>
#include <string>
#include <vector>

#include "tests/applications/filters/reference_filters.h"
#include "tests/support/gl_surface.h"
#include "tests/support/jvm.h"
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
    void SetUp() override {
        JvmTest::SetUp();
        m_Render = new_object("com/tervo/media/effects/renderer/render/FiltersRender", "()V");
        ASSERT_NE(m_Render, nullptr);
    }

    jlong create(const char* name) {
        return call_long(m_Render, "nativeCreate", "(Ljava/lang/String;)J", string(name));
    }
    jlong create_on_surface(const char* name, jint target) {
        return call_long(m_Render, "nativeOnSurfaceCreated", "(Ljava/lang/String;I)J", string(name), target);
    }
    void destroy(jlong handle) { call_void(m_Render, "nativeOnSurfaceDestroyed", "(J)V", handle); }
    jint type_of(jlong handle, const char* key) {
        return call_int(m_Render, "nativeGetParameterType", "(JLjava/lang/String;)I", handle, string(key));
    }
    void process(jlong handle, jobject bitmap) {
        call_void(m_Render, "nativeProcess", "(JLandroid/graphics/Bitmap;)V", handle, bitmap);
    }
    void draw(jlong handle) { call_void(m_Render, "nativeOnDrawFrame", "(J)V", handle); }
    void set_bitmap(jlong handle, jobject bitmap, jint width, jint height) {
        call_void(m_Render, "nativeSetBitmap", "(JLandroid/graphics/Bitmap;II)V", handle, bitmap, width, height);
    }
    void set_texture(jlong handle, GLuint texture, const ReferenceImage& input, jint width, jint height) {
        call_void(m_Render, "nativeSetTexture", "(JIIIII)V", handle, static_cast<jint>(texture), input.width,
                  input.height, width, height);
    }

    // Calls nativeSetParameters`type`, whose value has this type in Java's notation.
    template <typename Value>
    void set(const std::string& type, const char* javaType, jlong handle, const char* key, Value value) {
        const std::string signature = std::string("(JLjava/lang/String;") + javaType + ")V";
        call_void(m_Render, ("nativeSetParameters" + type).c_str(), signature.c_str(), handle, string(key), value);
    }
    void set_table(jlong handle, const char* key, jobject bitmap) {
        call_void(m_Render, "nativeSetParametersBitmap", "(JLjava/lang/String;Landroid/graphics/Bitmap;)V", handle,
                  string(key), bitmap);
        if (bitmap != nullptr) {
            EXPECT_EQ(lock_count(bitmap), 0);
        }
    }

    template <typename Array, typename Element, size_t Count>
    Array new_array(Array (JNIEnv::*make)(jsize), void (JNIEnv::*fill)(Array, jsize, jsize, const Element*),
                    const std::array<Element, Count>& values) {
        const Array array = (env->*make)(static_cast<jsize>(Count));
        (env->*fill)(array, 0, static_cast<jsize>(Count), values.data());
        return array;
    }
    template <size_t Count>
    jfloatArray floats(const std::array<float, Count>& values) {
        return new_array(&JNIEnv::NewFloatArray, &JNIEnv::SetFloatArrayRegion, values);
    }

    std::vector<unsigned char> processed(jlong handle, const ReferenceImage& input) {
        const jobject bitmap = new_bitmap(input.width, input.height, input.pixels);
        process(handle, bitmap);
        EXPECT_EQ(lock_count(bitmap), 0);
        return bitmap_pixels(bitmap);
    }

    jobject m_Render = nullptr;
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
    const auto expect_set = [&](const std::string& type, const char* javaType, auto value, const Vertices& seen) {
        EXPECT_EQ(logged([&] { set(type, javaType, handle, "mTexVertices", value); }),
                  (Lines{entry("nativeSetParameters" + type), vertices_line(seen)}));
    };
    const Vertices mirrored = {1, 0, 0, 0, 1, 1, 0, 1};
    Vertices pointed = {3, 4};
    expect_set("Double", "D", std::bit_cast<double>(std::array<float, 2>{-3.0F, 1.0F}), {-3, 1});
    expect_set("Float", "F", -1.5, {-1.5F});
    expect_set("Boolean", "Z", jint{JNI_TRUE}, {});
    expect_set("Integer", "I", std::bit_cast<jint>(2.5F), {2.5F});
    expect_set("Long", "J", reinterpret_cast<jlong>(pointed.data()), pointed);
    expect_set("FloatArray", "[F", floats(mirrored), mirrored);
    expect_set("BooleanArray", "[Z",
               new_array(&JNIEnv::NewBooleanArray, &JNIEnv::SetBooleanArrayRegion, std::array<jboolean, 32>{}), {});
    expect_set(
        "IntegerArray", "[I",
        new_array(&JNIEnv::NewIntArray, &JNIEnv::SetIntArrayRegion, std::bit_cast<std::array<jint, 8>>(mirrored)),
        mirrored);
    expect_set("DoubleArray", "[D",
               new_array(&JNIEnv::NewDoubleArray, &JNIEnv::SetDoubleArrayRegion,
                         std::bit_cast<std::array<double, 4>>(pointed)),
               pointed);
    destroy(handle);
}

TEST_F(FiltersRender, SetsNothingFromWhatIsMissingShortOrUnknown) {
    const ReferenceImage input = smooth_picture(33, 21);
    const jlong handle = create("ImageFilterDistorted");
    const std::vector<unsigned char> before = processed(handle, input);
    const Lines lines = logged([&] {
        for (const auto& [type, javaType] :
             {std::pair("Boolean", "[Z"), {"Integer", "[I"}, {"Float", "[F"}, {"Double", "[D"}}) {
            set(std::string(type) + "Array", javaType, handle, "mTexVertices", jfloatArray{});
        }
        set("FloatArray", "[F", handle, "mTexVertices", floats(std::array<float, 7>{}));
        set("FloatArray", "[F", handle, "mPosVertices", floats(std::array<float, 7>{}));
        set("FloatArray", "[F", handle, "mTextureMatrix", floats(std::array<float, 15>{}));
        set("FloatArray", "[F", handle, "mStrength", env->NewFloatArray(0));
        set("BooleanArray", "[Z", handle, "mPosVertices", env->NewBooleanArray(31));
        for (const char* key : {static_cast<const char*>(nullptr), "", "mZoom", "mstrength"}) {
            set("Float", "F", handle, key, 1.0);
            set("FloatArray", "[F", handle, key, floats(Vertices{}));
            set("Long", "J", handle, key, jlong{8});
        }
        set("Long", "J", handle, "mStrength", jlong{0});
    });
    EXPECT_EQ(lines.size(), 4U + 5 + 4 * 3 + 1);
    EXPECT_TRUE(std::all_of(lines.begin(), lines.end(),
                            [](const std::string& line) { return line.starts_with(entry("nativeSetParameters")); }));
    EXPECT_EQ(processed(handle, input), before);

    EXPECT_EQ(type_of(handle, "mStrength"), 5);
    EXPECT_EQ(type_of(handle, "mTexVertices"), 6);
    for (const char* key : {static_cast<const char*>(nullptr), "", "mFilterBitmap", "MStrength"}) {
        EXPECT_EQ(type_of(handle, key), 0);
    }
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
    const Lines first = logged([&] {
        set_table(handle, "mFilterBitmap", wrong);
        set_table(handle, "mFilterBitmap", recycled);
        set_table(handle, "mTexVertex", right);
        set_table(handle, nullptr, right);
        set_table(0, "mFilterBitmap", right);
    });
    const Lines skipped = logged([&] { set_table(handle, "mFilterBitmap", nullptr); });
    // Numbers that would make a table's description are no table.
    set("IntegerArray", "[I", handle, "mFilterBitmap",
        new_array(&JNIEnv::NewIntArray, &JNIEnv::SetIntArrayRegion, std::array<jint, 6>{8, 0, 4096, 64, 4, 4096 * 4}));
    EXPECT_EQ(processed(handle, input), before);

    const std::string name = entry("nativeSetParametersBitmap ");
    const std::string end = "   pImageFilterBaseGL:" + pointer(handle);
    Lines expected;
    for (const jlong each : {handle, handle, handle, handle, jlong{0}}) {
        for (const char* number : {"1", "3"}) {
            expected.push_back(name + number + "   pImageFilterBaseGL:" + pointer(each));
        }
    }
    EXPECT_EQ(first, expected);
    EXPECT_EQ(skipped, (Lines{name + "1" + end, name + "2" + end}));

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
                  set_bitmap(handle, bitmap, 40, 30);
                  draw(handle);
                  type_of(handle, "mStrength");
              }),
              (Lines{entry("nativeSetBitmap pImageFilterBaseGL:") + pointer(handle), entry("nativeGetParameterType")}));
    const ReferenceImage expected = reference_filter("Xray", {}, input, 40, 30);
    expect_close(expected, surface.pixels(), 3);

    // Neither an empty size nor a bitmap without pixels takes the input away.
    const jobject recycled = new_bitmap(40, 30, input.pixels);
    call_void(recycled, "recycle", "()V");
    set_bitmap(handle, bitmap, 0, 30);
    set_bitmap(handle, bitmap, 40, -1);
    set_bitmap(handle, recycled, 40, 30);
    set_bitmap(handle, nullptr, 40, 30);
    process(handle, bitmap);
    EXPECT_EQ(bitmap_pixels(bitmap), input.pixels) << "a filter without an engine of its own processes no bitmap";
    EXPECT_EQ(lock_count(bitmap) + lock_count(recycled), 0);
    glClear(GL_COLOR_BUFFER_BIT);
    draw(handle);
    expect_close(expected, surface.pixels(), 3);
    EXPECT_EQ(logged([&] { destroy(handle); }),
              Lines{entry("nativeOnSurfaceDestroyed pImageFilterBaseGL:") + pointer(handle)});
    EXPECT_EQ(living_objects(), 0);

    const GLuint texture = new_texture(40, 30, input.pixels.data());
    handle = create_on_surface("ImageFilterXray", GL_TEXTURE_2D);
    EXPECT_EQ(logged([&] { set_texture(handle, texture, input, 40, 30); }),
              (Lines{entry("nativeSetTexture  1 pImageFilterBaseGL:") + pointer(handle),
                     entry("nativeSetTexture  2 pImageFilterBaseGL:") + pointer(handle)}));
    glClear(GL_COLOR_BUFFER_BIT);
    draw(handle);
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
        set_texture(0, 1, input, 8, 6);
        set_bitmap(0, bitmap, 8, 6);
        draw(0);
        process(0, bitmap);
        set("Float", "F", 0, "mStrength", 1.0);
        set("FloatArray", "[F", 0, "mTexVertices", floats(Vertices{}));
        set("Long", "J", 0, "mStrength", jlong{8});
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
    process(handle, bitmap);
    process(handle, nullptr);
    EXPECT_EQ(lock_count(bitmap), 0);
    expect_close(reference_filter("None", {}, input, 8, 6), processed(handle, input), 3);
    EXPECT_NE(eglGetCurrentContext(), EGL_NO_CONTEXT);
    destroy(handle);
    EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
}

}  // namespace
