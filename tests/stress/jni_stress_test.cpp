// SPDX-License-Identifier: Apache-2.0
// Each native method again and again, in a Java virtual machine that checks what is done to it (-Xcheck:jni) and warns
// when a call leaves references behind: all calls of a row share one frame of local references.
#include <gmock/gmock.h>
#include <malloc.h>

#include <fstream>
#include <functional>
#include <string>

#include "applications/filters/gpu_image_filter_base.h"
#include "applications/pano/panorama_interface.h"
#include "tests/applications/pano/panorama_module_peer.h"
#include "tests/support/gl_surface.h"
#include "tests/support/jvm.h"
#include "tests/support/native_methods.h"
#include "tests/support/random_bytes.h"
#include "tests/support/run_length.h"

namespace {

constexpr int kWidth = 16;
constexpr int kHeight = 12;

JNIEnv* gEnv = nullptr;
jobject gBitmap = nullptr;

template <typename Result, typename This, typename... Parameters, typename... Arguments>
Result call_on(jobject thiz, Result (*method)(JNIEnv*, This, Parameters...), Arguments... arguments) {
    return method(gEnv, static_cast<This>(thiz), arguments...);
}

template <typename Method, typename... Arguments>
auto call(Method method, Arguments... arguments) {
    return call_on(nullptr, method, arguments...);
}

jstring text(const char* characters) {
    return gEnv->NewStringUTF(characters);
}

// What the calls of a row need is made once; then comes the call itself.
using Call = std::function<void()>;
struct Row {
    // "Class.method" for each.
    std::string methods;
    std::function<Call()> prepare;
    // How many times dearer than most: it has as many times fewer calls.
    size_t cost = 1;
};

template <typename Method, typename... Arguments>
Row setter(const char* name, Method method, const char* key, Arguments... arguments) {
    return {std::string("FiltersRender.") + name, [=] {
                const jlong handle = call(FILTERS(nativeOnSurfaceCreated), text("ImageFilterDistorted"), 1);
                return [=, key = text(key)] { call(method, handle, key, arguments...); };
            }};
}

// On a filter that is open: off screen, or on the current surface.
Row on_filter(const char* methods, bool isOffscreen, const char* name, const std::function<void(jlong)>& work) {
    return {methods, [=] {
                const jlong handle = call(isOffscreen ? EFFECTS(filterOpen) : EFFECTS(surfaceFilterOpen), text(name));
                EXPECT_NE(handle, 0);
                return [=] { work(handle); };
            }};
}

std::vector<Row> rows() {
    const jfloatArray one = gEnv->NewFloatArray(1);
    const jbyteArray frame = gEnv->NewByteArray(640 * 480 * 2);
    const jbyteArray small = gEnv->NewByteArray(12);
    const jintArray answer = gEnv->NewIntArray(3);
    const jstring strength = text("mStrength");
    const jstring table = text("mFilterBitmap");
    const jstring xray = text("ImageFilterXray");
    const jstring stamp = text("2026");
    const jint camera = call(EFFECTS(createCameraTexture));
    // What waits for threads of its own, and what makes a whole context.
    constexpr size_t kThreads = 20;
    constexpr size_t kDear = 200;
    return {
        {"BlurRender.nativeProcess",
         [] { return [] { call(BLUR(nativeProcess), gBitmap, kWidth, kHeight, 5, 0, 100); }; }},
        {"FiltersRender.nativeCreate",
         [=] {
             return [=] {
                 const jlong handle = call(FILTERS(nativeCreate), xray);
                 // As an application ends an off-screen filter: with it goes its context.
                 call(FILTERS(nativeProcess), handle, gBitmap);
                 reinterpret_cast<ImageFilterBaseGL*>(handle)->release();
                 call(FILTERS(nativeOnSurfaceDestroyed), handle);
             };
         },
         kDear},
        {"FiltersRender.nativeOnSurfaceCreated FiltersRender.nativeOnSurfaceDestroyed",
         [=] {
             return [=] { call(FILTERS(nativeOnSurfaceDestroyed), call(FILTERS(nativeOnSurfaceCreated), xray, 1)); };
         }},
        {"FiltersRender.nativeSetTexture FiltersRender.nativeOnDrawFrame",
         [=] {
             const jlong handle = call(FILTERS(nativeOnSurfaceCreated), xray, 1);
             const auto texture =
                 static_cast<jint>(new_texture(kWidth, kHeight, random_bytes(kWidth * kHeight * 4, 1).data()));
             return [=] {
                 call(FILTERS(nativeSetTexture), handle, texture, kWidth, kHeight, kWidth, kHeight);
                 call(FILTERS(nativeOnDrawFrame), handle);
             };
         }},
        {"FiltersRender.nativeSetBitmap",
         [=] {
             const jlong handle = call(FILTERS(nativeOnSurfaceCreated), xray, 1);
             return [=] { call(FILTERS(nativeSetBitmap), handle, gBitmap, kWidth, kHeight); };
         }},
        {"FiltersRender.nativeSetParametersBitmap",
         [=] {
             const jlong handle = call(FILTERS(nativeOnSurfaceCreated), text("ImageFilterTable"), 1);
             return [=] { call(FILTERS(nativeSetParametersBitmap), handle, table, gBitmap); };
         }},
        {"FiltersRender.nativeProcess",
         [=] {
             const jlong handle = call(FILTERS(nativeCreate), xray);
             return [=] { call(FILTERS(nativeProcess), handle, gBitmap); };
         }},
        {"FiltersRender.nativeGetParameterType",
         [=] {
             const jlong handle = call(FILTERS(nativeOnSurfaceCreated), text("ImageFilterDistorted"), 1);
             return [=] { EXPECT_EQ(call(FILTERS(nativeGetParameterType), handle, strength), PARAMETER_TYPE_FLOAT); };
         }},
        setter("nativeSetParametersBoolean", FILTERS(nativeSetParametersBoolean), "mStrength", jboolean{1}),
        setter("nativeSetParametersInteger", FILTERS(nativeSetParametersInteger), "mStrength", 1),
        setter("nativeSetParametersFloat", FILTERS(nativeSetParametersFloat), "mStrength", 1.0F),
        setter("nativeSetParametersDouble", FILTERS(nativeSetParametersDouble), "mStrength", 1.0),
        setter("nativeSetParametersLong", FILTERS(nativeSetParametersLong), "mStrength", 0),
        setter("nativeSetParametersBooleanArray", FILTERS(nativeSetParametersBooleanArray), "mTexVertices",
               gEnv->NewBooleanArray(64)),
        setter("nativeSetParametersIntegerArray", FILTERS(nativeSetParametersIntegerArray), "mTexVertices",
               gEnv->NewIntArray(8)),
        setter("nativeSetParametersFloatArray", FILTERS(nativeSetParametersFloatArray), "mTexVertices",
               gEnv->NewFloatArray(8)),
        setter("nativeSetParametersDoubleArray", FILTERS(nativeSetParametersDoubleArray), "mTexVertices",
               gEnv->NewDoubleArray(8)),
        {"PanoramaModule.nativeProcess",
         [=] {
             const jclass type = gEnv->FindClass("com/tervo/media/effects/pano/PanoramaModule");
             const jobject thiz = gEnv->NewObject(type, gEnv->GetMethodID(type, "<init>", "()V"));
             const jlong handle = call(PANORAMA(nativeCreate), 4, 2, 1);
             return [=] { call_on(thiz, PANORAMA(nativeProcess), handle, small, 10.0F, 20.0F); };
         }},
        {"PanoramaModule.nativeCreate PanoramaModule.nativeDestroy",
         [=] {
             return [] {
                 const jlong handle = call(PANORAMA(nativeCreate), 4, 2, 1);
                 auto& panorama = *reinterpret_cast<PanoramaInterface*>(handle);
                 const auto push = [&] {
                     int x = 0;
                     int y = 0;
                     unsigned char pixels[12] = {};
                     panorama.addFrame(pixels, 10, 20, x, y);
                 };
                 push();
                 PanoramaModulePeer::closeWithAFrameQueued(PanoramaModulePeer::moduleOf(panorama), push, [&] {
                     PANORAMA(nativeDestroy)(nullptr, nullptr, handle);
                 });
             };
         },
         kThreads},
        {"SuperCaptureMode.nativeCreate SuperCaptureMode.nativeProcess SuperCaptureMode.nativeDestroy",
         [=] {
             const jclass type = gEnv->FindClass("com/tervo/media/supercapture/mode/SuperCaptureMode");
             const jobject thiz = gEnv->NewObject(type, gEnv->GetMethodID(type, "<init>", "()V"));
             const jbyteArray bright = gEnv->NewByteArray(8);
             const jbyte levels[8] = {100, 100, 100, 100, 100, 100, 100, 100};
             gEnv->SetByteArrayRegion(bright, 0, 8, levels);
             return [=] {
                 const jlong handle = call_on(thiz, MODE(nativeCreate), 4, 2, 1);
                 call_on(thiz, MODE(nativeProcess), handle, bright);
                 call_on(thiz, MODE(nativeDestroy), handle);
             };
         }},
        {"Natives.blur", [] { return [] { call(EFFECTS(blur), gBitmap, kWidth, kHeight, 5, 0, 100); }; }},
        {"Natives.palette",
         [] { return [] { gEnv->DeleteLocalRef(call(EFFECTS(palette), gBitmap, kWidth, kHeight, 4)); }; }, 10},
        {"Natives.stamp", [=] { return [=] { call(EFFECTS(stamp), frame, 640, 480, stamp); }; }, 10},
        {"Natives.setProgramCacheDirectory",
         [=] {
             return [directory = text(testing::TempDir().c_str())] {
                 call(EFFECTS(setProgramCacheDirectory), directory);
                 call(EFFECTS(setProgramCacheDirectory), nullptr);
             };
         }},
        {"Natives.filterTable", [] { return [] { gEnv->DeleteLocalRef(call(EFFECTS(filterTable))); }; }},
        {"Natives.filterOpen Natives.filterClose",
         [=] { return [=] { call(EFFECTS(filterClose), call(EFFECTS(filterOpen), xray)); }; }, kDear},
        on_filter("Natives.filterApply", true, "ImageFilterXray",
                  [](jlong handle) { call(EFFECTS(filterApply), handle, gBitmap, kWidth, kHeight); }),
        on_filter("Natives.filterSet", true, "ImageFilterDistorted",
                  [=](jlong handle) { call(EFFECTS(filterSet), handle, strength, one); }),
        on_filter("Natives.filterSetBitmap", true, "ImageFilterTable",
                  [=](jlong handle) { call(EFFECTS(filterSetBitmap), handle, table, gBitmap, kWidth, kHeight); }),
        {"Natives.surfaceFilterOpen Natives.surfaceFilterClose",
         [=] { return [=] { call(EFFECTS(surfaceFilterClose), call(EFFECTS(surfaceFilterOpen), xray)); }; }, 20},
        on_filter(
            "Natives.surfaceFilterDraw", false, "ImageFilterXray",
            [=](jlong handle) { call(EFFECTS(surfaceFilterDraw), handle, camera, kWidth, kHeight, kWidth, kHeight); }),
        on_filter("Natives.surfaceFilterSet", false, "ImageFilterDistorted",
                  [=](jlong handle) { call(EFFECTS(surfaceFilterSet), handle, strength, one); }),
        on_filter(
            "Natives.surfaceFilterSetBitmap", false, "ImageFilterTable",
            [=](jlong handle) { call(EFFECTS(surfaceFilterSetBitmap), handle, table, gBitmap, kWidth, kHeight); }),
        {"Natives.createCameraTexture Natives.deleteCameraTexture",
         [] { return [] { call(EFFECTS(deleteCameraTexture), call(EFFECTS(createCameraTexture))); }; }},
        {"Natives.panoramaOpen Natives.panoramaFeed Natives.panoramaClose",
         [=] {
             return [=] {
                 const jlong handle = call(EFFECTS(panoramaOpen), 4, 2, 1);
                 call(EFFECTS(panoramaFeed), handle, small, 10.0F, 20.0F, answer);
                 call(EFFECTS(panoramaFeed), handle, small, 10.0F, 20.0F, answer);
                 call(EFFECTS(panoramaClose), handle);
             };
         },
         kThreads},
        {"Natives.burstOpen Natives.burstPush Natives.burstMerge Natives.burstClose",
         [=] {
             return [burstFrame = gEnv->NewByteArray(16)] {
                 const jlong handle = call(EFFECTS(burstOpen), 4, 2);
                 call(EFFECTS(burstPush), handle, burstFrame);
                 EXPECT_TRUE(call(EFFECTS(burstMerge), handle, 1, burstFrame));
                 call(EFFECTS(burstClose), handle);
             };
         },
         kThreads},
    };
}

class JniStress : public JvmTest {
  protected:
    void SetUp() override {
        JvmTest::SetUp();
        gEnv = env;
        gBitmap = new_bitmap(kWidth, kHeight, random_bytes(kWidth * kHeight * 4, 1));
    }

    const GlSurface surface{kWidth, kHeight};
};

TEST_F(JniStress, CallsLeaveNothingBehind) {
    size_t total = 0;
    for (const Row& row : rows()) {
        SCOPED_TRACE(row.methods);
        ASSERT_EQ(env->PushLocalFrame(16), 0);
        const Call work = row.prepare();
        // More than the frame has room for, at least of what is cheap.
        const size_t calls = run_length(100 / std::min<size_t>(row.cost, 10), std::max<size_t>(100000 / row.cost, 500));
        size_t allocated = 0;
        for (size_t i = 0; i < calls; ++i) {
            if (i == calls / 4) {
                allocated = mallinfo2().uordblks;
            }
            work();
            // As at a frame's end; until then the driver keeps what was drawn with.
            glFinish();
            ASSERT_FALSE(env->ExceptionCheck());
        }
        const size_t grown = std::max(mallinfo2().uordblks, allocated) - allocated;
        std::printf("%zu x %s: %zu bytes more\n", calls, row.methods.c_str(), grown);
        std::fflush(stdout);
        total += calls;
        // The machine's own threads take and give meanwhile; Mesa keeps 60 bytes for each context.
        EXPECT_LE(grown, (size_t{512} << 10U) + calls * (row.cost > 20 ? 80 : 2));
        env->PopLocalFrame(nullptr);
    }
    report_count(total, "rounds of native methods");
}

TEST_F(JniStress, KnowsEveryMethod) {
    std::string known = " ";
    for (const Row& row : rows()) {
        known += row.methods + ' ';
    }
    std::ifstream exports(KORVANE_EXPORTS);
    size_t methods = 0;
    for (std::string name; exports >> name >> name;) {
        if (name.starts_with("Java_")) {
            const size_t method = name.rfind('_');
            name[method] = '.';
            EXPECT_THAT(known, testing::HasSubstr(' ' + name.substr(name.rfind('_') + 1) + ' '));
            ++methods;
        }
    }
    EXPECT_GT(methods, 0U);
    report_count(methods, "native methods");
}

}  // namespace
