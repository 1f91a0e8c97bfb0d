// The Java renderer's filters, called from Java in the library that an application loads.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/applications/filters/reference_filters.h"
#include "tests/support/gl_surface.h"
#include "tests/support/jvm.h"
#include "tests/support/standard_error.h"

// Freed memory that waits in quarantine would look like a leak in the resident set.
extern "C" const char* __asan_default_options() {
    return "quarantine_size_mb=4";
}

namespace {

constexpr char kBitmap[] = "(JLandroid/graphics/Bitmap;)V";
constexpr char kKeyedBitmap[] = "(JLjava/lang/String;Landroid/graphics/Bitmap;)V";
constexpr char kPrefix[] = "Java_com_tervo_media_effects_renderer_render_FiltersRender_";

using Lines = std::vector<std::string>;

std::string pointer(jlong handle) {
    char text[32];
    std::snprintf(text, sizeof(text), "%p", reinterpret_cast<void*>(handle));
    return text;
}

std::string entry(const std::string& rest) {
    return kPrefix + rest;
}

void expect_close(const ReferenceImage& expected, const std::vector<unsigned char>& pixels) {
    ASSERT_EQ(expected.pixels.size(), pixels.size());
    int worst = 0;
    for (size_t i = 0; i < pixels.size(); ++i) {
        worst = std::max(worst, std::abs(pixels[i] - expected.pixels[i]));
    }
    EXPECT_LE(worst, 3);
}

size_t resident_bytes() {
    size_t total = 0;
    size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

class FiltersRender : public JvmTest {
  protected:
    void SetUp() override {
        JvmTest::SetUp();
        m_Render = new_object("com/tervo/media/effects/renderer/render/FiltersRender", "()V");
        ASSERT_NE(m_Render, nullptr);
    }

    jlong create(const char* name) {
        return call_long(m_Render, "nativeCreate", "(Ljava/lang/String;)J", name == nullptr ? nullptr : string(name));
    }
    jlong create_on_surface(const char* name, jint target) {
        return call_long(m_Render, "nativeOnSurfaceCreated", "(Ljava/lang/String;I)J",
                         name == nullptr ? nullptr : string(name), target);
    }
    void destroy(jlong handle) { call_void(m_Render, "nativeOnSurfaceDestroyed", "(J)V", handle); }
    jint type_of(jlong handle, const char* key) {
        return call_int(m_Render, "nativeGetParameterType", "(JLjava/lang/String;)I", handle,
                        key == nullptr ? nullptr : string(key));
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
        call_void(m_Render, ("nativeSetParameters" + type).c_str(), signature.c_str(), handle,
                  key == nullptr ? nullptr : string(key), value);
    }
    void set_float(jlong handle, const char* key, float value) { set("Float", "F", handle, key, double{value}); }
    void set_table(jlong handle, const char* key, jobject bitmap) {
        call_void(m_Render, "nativeSetParametersBitmap", kKeyedBitmap, handle, key == nullptr ? nullptr : string(key),
                  bitmap);
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
        call_void(m_Render, "nativeProcess", kBitmap, handle, bitmap);
        EXPECT_EQ(lock_count(bitmap), 0);
        std::vector<unsigned char> pixels = bitmap_pixels(bitmap);
        env->DeleteLocalRef(bitmap);
        return pixels;
    }

    jobject m_Render = nullptr;
};

// A table of 4096 x 64 whose rows and columns run against the identity, as RGBA and as the reference takes it.
struct InvertingTable {
    InvertingTable() {
        for (int i = 0; i < 4096 * 64; ++i) {
            const int colour[] = {255 - 4 * (i / 4096), 100, 4 * (i % 64)};
            for (const int value : colour) {
                rgba.push_back(static_cast<unsigned char>(value));
                reference.pixels.push_back(static_cast<unsigned char>(value));
            }
            rgba.push_back(7);
        }
    }
    std::vector<unsigned char> rgba;
    ReferenceImage reference{4096, 64, 3, {}};
};

// No parameter is a boolean, an int or a double; a filter reads the bytes of such a value as its own type, so these
// setters are told apart by values whose bytes make a float.
TEST_F(FiltersRender, EachSetterBringsItsValueToTheFilter) {
    const ReferenceImage input = smooth_picture(64, 48);
    const jlong handle = create("ImageFilterDistorted");
    ASSERT_NE(handle, 0);
    alignas(16) float pointed[16] = {3.0F};
    const std::array<float, 8> camera = {1, 1, 1, 0, 0, 1, 0, 0};
    const std::array<float, 8> upright = {0, 0, 1, 0, 0, 1, 1, 1};
    const std::array<float, 8> mirrored = {1, 0, 0, 0, 1, 1, 0, 1};

    struct Step {
        const char* setter;  // the end of its name
        std::function<void(const std::string& setter)> call;
        std::optional<float> strength;                // what the filter must have afterwards
        std::optional<std::array<float, 8>> corners;  // where this changes
    };
    const auto corners = [&](const char* type, jobject array) {
        return [this, handle, type, array](const std::string& setter) {
            set(setter, type, handle, "mTexVertices", array);
        };
    };
    const auto strength = [&](const char* type, auto value) {
        return
            [this, handle, type, value](const std::string& setter) { set(setter, type, handle, "mStrength", value); };
    };
    const Step steps[] = {
        {"Float", strength("F", -1.5), -1.5F, {}},
        {"Boolean", strength("Z", jint{JNI_TRUE}), 0.0F, {}},
        {"Integer", strength("I", std::bit_cast<jint>(2.5F)), 2.5F, {}},
        {"Double", strength("D", std::bit_cast<double>(std::array<float, 2>{-3.0F, 1.0F})), -3.0F, {}},
        {"Long", strength("J", reinterpret_cast<jlong>(pointed)), 3.0F, {}},
        {"FloatArray", corners("[F", floats(upright)), {}, upright},
        {"IntegerArray",
         corners("[I", new_array(&JNIEnv::NewIntArray, &JNIEnv::SetIntArrayRegion,
                                 std::bit_cast<std::array<jint, 8>>(mirrored))),
         {},
         mirrored},
        {"DoubleArray",
         corners("[D", new_array(&JNIEnv::NewDoubleArray, &JNIEnv::SetDoubleArrayRegion,
                                 std::bit_cast<std::array<double, 4>>(camera))),
         {},
         camera},
        {"BooleanArray",
         corners("[Z", new_array(&JNIEnv::NewBooleanArray, &JNIEnv::SetBooleanArrayRegion, std::array<jboolean, 32>{})),
         {},
         std::array<float, 8>{}},
    };

    ReferenceParameters seen{.strength = 4.0, .radius = 0.2F, .centerx = 0.5, .centery = 0.5};
    ReferenceCorners seenCorners = kCameraCorners;
    for (const Step& step : steps) {
        SCOPED_TRACE(step.setter);
        Lines expected = {entry(std::string("nativeSetParameters") + step.setter)};
        if (step.corners) {
            std::copy(step.corners->begin(), step.corners->end(), seenCorners.begin());
            expected.emplace_back("mTexVertices: ");
            for (const float value : *step.corners) {
                expected.back() += std::to_string(value) + ", ";
            }
            expected.back().resize(expected.back().size() - 2);
        }
        seen.strength = step.strength.value_or(static_cast<float>(seen.strength));
        {
            StandardErrorCapture capture;
            step.call(step.setter);
            EXPECT_EQ(capture.log_lines(), expected);
        }
        expect_close(reference_filter("Distorted", seen, input, 64, 48, seenCorners), processed(handle, input));
    }
    destroy(handle);
}

TEST_F(FiltersRender, SetsNothingFromWhatIsMissingShortOrUnknown) {
    const ReferenceImage input = smooth_picture(33, 21);
    const jlong handle = create("ImageFilterDistorted");
    ASSERT_NE(handle, 0);
    const std::vector<unsigned char> before = processed(handle, input);
    Lines lines;
    {
        StandardErrorCapture capture;
        const jfloatArray null = nullptr;
        for (const char* type : {"Boolean", "Integer", "Float", "Double"}) {
            const std::string javaType = std::string("[") + (type[0] == 'B' ? 'Z' : type[0]);
            set(std::string(type) + "Array", javaType.c_str(), handle, "mTexVertices", null);
        }
        set("FloatArray", "[F", handle, "mTexVertices", floats(std::array<float, 7>{}));
        set("FloatArray", "[F", handle, "mPosVertices", floats(std::array<float, 7>{}));
        set("FloatArray", "[F", handle, "mTextureMatrix", floats(std::array<float, 15>{}));
        set("FloatArray", "[F", handle, "mStrength", env->NewFloatArray(0));
        set("BooleanArray", "[Z", handle, "mPosVertices", env->NewBooleanArray(31));
        for (const char* key : {static_cast<const char*>(nullptr), "", "mZoom", "mstrength"}) {
            set_float(handle, key, 1.0F);
            set("FloatArray", "[F", handle, key, floats(std::array<float, 8>{}));
            set("Long", "J", handle, key, jlong{8});
        }
        set("Long", "J", handle, "mStrength", jlong{0});
        lines = capture.log_lines();
    }
    EXPECT_EQ(lines.size(), 4U + 5 + 4 * 3 + 1);
    for (const std::string& line : lines) {
        EXPECT_EQ(line.rfind(entry("nativeSetParameters"), 0), 0U) << line;
    }
    EXPECT_EQ(processed(handle, input), before);

    // A setter of the wrong type reads zeros behind its value.
    StandardErrorCapture capture;
    set_float(handle, "mTexVertices", 1.0F);
    std::string vertices = "mTexVertices: 1.000000";
    for (int i = 0; i < 7; ++i) {
        vertices += ", 0.000000";
    }
    EXPECT_EQ(capture.log_lines().back(), vertices);
    destroy(handle);
}

TEST_F(FiltersRender, TellsWhichSetterFits) {
    const jlong distorted = create("ImageFilterDistorted");
    const jlong table = create("ImageFilterTable");
    EXPECT_EQ(type_of(distorted, "mStrength"), 5);
    EXPECT_EQ(type_of(distorted, "mTexVertices"), 6);
    EXPECT_EQ(type_of(table, "mFilterBitmap"), 10);
    for (const char* key : {static_cast<const char*>(nullptr), "", "mFilterBitmap", "MStrength"}) {
        EXPECT_EQ(type_of(distorted, key), 0);
    }
    EXPECT_EQ(type_of(0, "mStrength"), -1);
    destroy(table);
    destroy(distorted);
}

TEST_F(FiltersRender, TakesALookupTableAsABitmap) {
    const ReferenceImage input = smooth_picture(45, 32);
    const InvertingTable inverting;
    const jobject right = new_bitmap(4096, 64, inverting.rgba);
    const jobject wrong = new_bitmap(64, 64, std::vector<unsigned char>(64 * 64 * 4, 9));
    const jobject recycled = new_bitmap(4096, 64, inverting.rgba);
    call_void(recycled, "recycle", "()V");
    const jlong handle = create("ImageFilterTable");
    ASSERT_NE(handle, 0);
    const std::vector<unsigned char> before = processed(handle, input);
    Lines first;
    Lines skipped;
    {
        StandardErrorCapture capture;
        set_table(handle, "mFilterBitmap", wrong);
        set_table(handle, "mFilterBitmap", recycled);
        set_table(handle, "mTexVertex", right);
        set_table(handle, nullptr, right);
        set_table(0, "mFilterBitmap", right);
        first = capture.log_lines();
    }
    {
        StandardErrorCapture capture;
        set_table(handle, "mFilterBitmap", nullptr);
        skipped = capture.log_lines();
    }
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
    expect_close(
        reference_filter("Table", {.strength = 1, .table = &inverting.reference}, input, 45, 32, kCameraCorners),
        processed(handle, input));
    destroy(handle);
}

TEST_F(FiltersRender, DrawsOnTheApplicationsSurface) {
    const ReferenceImage input = smooth_picture(40, 30);
    const jobject bitmap = new_bitmap(40, 30, input.pixels);
    GlSurface surface(40, 30);
    jlong handle = 0;
    Lines lines;
    {
        StandardErrorCapture capture;
        handle = create_on_surface("ImageFilterXray", 1);
        set_bitmap(handle, bitmap, 40, 30);
        draw(handle);
        type_of(handle, "mStrength");
        lines = capture.log_lines();
    }
    ASSERT_NE(handle, 0);
    EXPECT_EQ(
        lines,
        (Lines{entry("nativeOnSurfaceCreated  1"), "NULL != mGPUContext.get()----------",
               "ImageFilterBaseGL::setupGraphics  1 this:" + pointer(handle),
               "ImageFilterBaseGL::setupGraphics  4 this:" + pointer(handle), "pImageFilterBaseGL:" + pointer(handle),
               entry("nativeSetBitmap pImageFilterBaseGL:") + pointer(handle), entry("nativeGetParameterType")}));
    const ReferenceImage expected = reference_filter("Xray", {}, input, 40, 30, kCameraCorners);
    expect_close(expected, surface.pixels());

    // Neither an empty size nor a bitmap without pixels takes the input away.
    const jobject recycled = new_bitmap(40, 30, input.pixels);
    call_void(recycled, "recycle", "()V");
    set_bitmap(handle, bitmap, 0, 30);
    set_bitmap(handle, bitmap, 40, -1);
    set_bitmap(handle, recycled, 40, 30);
    set_bitmap(handle, nullptr, 40, 30);
    call_void(m_Render, "nativeProcess", kBitmap, handle, bitmap);
    EXPECT_EQ(bitmap_pixels(bitmap), input.pixels) << "a filter without an engine of its own processes no bitmap";
    EXPECT_EQ(lock_count(bitmap), 0);
    EXPECT_EQ(lock_count(recycled), 0);
    glClear(GL_COLOR_BUFFER_BIT);
    draw(handle);
    expect_close(expected, surface.pixels());
    {
        StandardErrorCapture capture;
        destroy(handle);
        lines = capture.log_lines();
    }
    EXPECT_EQ(lines, Lines{entry("nativeOnSurfaceDestroyed pImageFilterBaseGL:") + pointer(handle)});

    const GLuint texture = new_texture(40, 30, input.pixels.data());
    handle = create_on_surface("ImageFilterXray", GL_TEXTURE_2D);
    {
        StandardErrorCapture capture;
        set_texture(handle, texture, input, 40, 30);
        lines = capture.log_lines();
    }
    EXPECT_EQ(lines, (Lines{entry("nativeSetTexture  1 pImageFilterBaseGL:") + pointer(handle),
                            entry("nativeSetTexture  2 pImageFilterBaseGL:") + pointer(handle)}));
    glClear(GL_COLOR_BUFFER_BIT);
    draw(handle);
    expect_close(expected, surface.pixels());
    destroy(handle);
    EXPECT_EQ(glIsTexture(texture), GL_TRUE);
    glDeleteTextures(1, &texture);
}

TEST_F(FiltersRender, WithoutAFilterOnlyLogs) {
    const ReferenceImage input = smooth_picture(8, 6);
    const jobject bitmap = new_bitmap(8, 6, input.pixels);
    {
        StandardErrorCapture capture;
        for (const char* name : {static_cast<const char*>(nullptr), "", "ImageFilterBase", "imagefilternone"}) {
            EXPECT_EQ(create(name), 0);
        }
        EXPECT_EQ(capture.log_lines(), Lines{});
        EXPECT_EQ(create_on_surface(nullptr, 1), 0);
        EXPECT_EQ(create_on_surface("ImageFilterBase", 0), 0);
        set_texture(0, 1, input, 8, 6);
        set_bitmap(0, bitmap, 8, 6);
        draw(0);
        call_void(m_Render, "nativeProcess", kBitmap, jlong{0}, bitmap);
        set_float(0, "mStrength", 1);
        set("FloatArray", "[F", 0, "mTexVertices", floats(std::array<float, 8>{}));
        set("Long", "J", 0, "mStrength", jlong{8});
        destroy(0);
        const std::string created = entry("nativeOnSurfaceCreated  1");
        const std::string null = "pImageFilterBaseGL:" + pointer(0);
        EXPECT_EQ(capture.log_lines(),
                  (Lines{created, null, created, null, entry("nativeSetTexture  1 ") + null,
                         entry("nativeSetTexture  2 ") + null, entry("nativeSetBitmap ") + null,
                         entry("nativeSetParametersFloat"), entry("nativeSetParametersFloatArray"),
                         entry("nativeSetParametersLong"), entry("nativeOnSurfaceDestroyed ") + null}));
    }
    EXPECT_EQ(bitmap_pixels(bitmap), input.pixels);
    EXPECT_EQ(lock_count(bitmap), 0);
}

TEST_F(FiltersRender, ProcessesNothingWithoutPixels) {
    const jlong handle = create("ImageFilterNone");
    const ReferenceImage input = smooth_picture(8, 6);
    const jobject bitmap = new_bitmap(8, 6, input.pixels);
    call_void(bitmap, "recycle", "()V");
    call_void(m_Render, "nativeProcess", kBitmap, handle, bitmap);
    EXPECT_EQ(lock_count(bitmap), 0);
    call_void(m_Render, "nativeProcess", kBitmap, handle, jobject{nullptr});
    expect_close(reference_filter("None", {}, input, 8, 6, kCameraCorners), processed(handle, input));
    destroy(handle);
}

// A filter that kept its context would add gigabytes here. On a surface the context lives on, and textures that were
// kept would add 60 MiB.
TEST_F(FiltersRender, ManyLivesTakeNoMoreMemoryThanAFew) {
    constexpr size_t kBound = 12 * 1024 * 1024;
    const ReferenceImage input = smooth_picture(512, 384);
    const jobject bitmap = new_bitmap(512, 384, input.pixels);
    const auto live = [&](const char* where, const std::function<void(const char* name)>& life) {
        size_t early = 0;
        for (int i = 1; i <= 100; ++i) {
            ASSERT_EQ(env->PushLocalFrame(32), 0);
            life(i % 2 == 0 ? "ImageFilterNone" : "ImageFilterMirror");
            env->PopLocalFrame(nullptr);
            if (i == 20) {
                early = resident_bytes();
            }
        }
        const size_t late = resident_bytes();
        std::printf("%s: resident after 20 lives %zu KiB, after 100 %zu KiB\n", where, early / 1024, late / 1024);
        EXPECT_LT(late, early + kBound);
    };
    live("off screen", [&](const char* name) {
        const jlong handle = create(name);
        ASSERT_NE(handle, 0);
        call_void(m_Render, "nativeProcess", kBitmap, handle, bitmap);
        destroy(handle);
    });
    GlSurface surface(8, 8);
    live("on a surface", [&](const char* name) {
        const jlong handle = create_on_surface(name, 1);
        ASSERT_NE(handle, 0);
        set_bitmap(handle, bitmap, 512, 384);
        draw(handle);
        glFinish();
        destroy(handle);
    });
}

}  // namespace
