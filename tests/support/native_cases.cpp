// SPDX-License-Identifier: Apache-2.0
#include "tests/support/native_cases.h"

#include "applications/filters/gpu_image_filter_base.h"
#include "applications/pano/panorama_interface.h"
#include "tests/applications/pano/panorama_module_peer.h"
#include "tests/support/gl_surface.h"
#include "tests/support/native_methods.h"
#include "tests/support/random_bytes.h"

NativeTest* NativeTest::java = nullptr;

namespace {

using Things = NativeThings;

constexpr int kWidth = 16;
constexpr int kHeight = 12;

NativeTest& java() {
    return *NativeTest::java;
}

// A native method on an object.
template <typename Result, typename This, typename... Parameters, typename... Arguments>
Result call_on(jobject thiz, Result (*method)(JNIEnv*, This, Parameters...), Arguments... arguments) {
    struct Leave {
        ~Leave() { leave_native(); }
    };
    const Leave afterwards;
    return method(enter_native(java().env), static_cast<This>(thiz), arguments...);
}

// One that is static, or does without its object.
template <typename Method, typename... Arguments>
auto call(Method method, Arguments... arguments) {
    return call_on(nullptr, method, arguments...);
}

// One that is not looked at.
template <typename Method, typename... Arguments>
auto arrange(Method method, Arguments... arguments) {
    return method(java().env, nullptr, arguments...);
}

const std::vector<unsigned char>& picture() {
    static const std::vector<unsigned char> bytes = random_bytes(kWidth * kHeight * 4, 6);
    return bytes;
}

bool is_unlocked(jobject bitmap) {
    const LocalFrame frame(16);
    const jint locks = java().lock_count(bitmap);
    EXPECT_EQ(locks, 0);
    return locks == 0;
}

// A bitmap is given back unlocked, and either worked on or as it was.
Answer picture_answer(jobject bitmap) {
    const LocalFrame frame(16);
    if (!is_unlocked(bitmap)) {
        return Answer::kWrong;
    }
    const bool isAsBefore = java().bitmap_pixels(bitmap) == picture();
    return answer(!isAsBefore, isAsBefore);
}

// A call of the Java layer that could not be done leaves an IllegalStateException.
Answer effects_answer(bool isDone) {
    // The exception that the test raised is gone already.
    if (was_raised()) {
        return answer(false, !isDone);
    }
    const LocalFrame frame(16);
    JNIEnv* env = java().env;
    const jthrowable exception = env->ExceptionOccurred();
    if (exception == nullptr) {
        return answer(isDone, false);
    }
    env->ExceptionClear();
    return answer(false, env->IsInstanceOf(exception, env->FindClass("java/lang/IllegalStateException")) == JNI_TRUE);
}

// Also what a filter keeps when it is only deleted.
void destroy(jlong handle) {
    if (handle != 0) {
        reinterpret_cast<ImageFilterBaseGL*>(handle)->release();
        arrange(FILTERS(nativeOnSurfaceDestroyed), handle);
    }
}

jlong open_sweep(const char* /*filter*/) {
    return arrange(PANORAMA(nativeCreate), 4, 2, 1);
}

// A sweep goes without nativeDestroy, which waits for one more frame.
void end_sweep(jlong handle) {
    delete reinterpret_cast<PanoramaInterface*>(handle);
}

// A filter for the current surface, or one that is off screen; and the same of the Java layer.
template <auto kOpen, auto... kMore>
jlong open(const char* filter) {
    return arrange(kOpen, java().string(filter), kMore...);
}
template <auto kClose>
void close(jlong handle) {
    arrange(kClose, handle);
}
constexpr Opened on_surface(const char* filter) {
    return {filter, open<FILTERS(nativeOnSurfaceCreated), 1>, destroy};
}
constexpr Opened off_screen(const char* filter) {
    return {filter, open<FILTERS(nativeCreate)>, destroy};
}
constexpr Opened effects_on_surface(const char* filter) {
    return {filter, open<EFFECTS(surfaceFilterOpen)>, close<EFFECTS(surfaceFilterClose)>};
}
constexpr Opened effects_off_screen(const char* filter) {
    return {filter, open<EFFECTS(filterOpen)>, close<EFFECTS(filterClose)>};
}

Answer burst_of(jobject thiz, const Things& t) {
    const jlong handle = call_on(thiz, MODE(nativeCreate), 4, 2, 1);
    call_on(thiz, MODE(nativeProcess), handle, t.burstFrame);
    call_on(thiz, MODE(nativeDestroy), handle);
    return answer(handle != 0 && !t.env->ExceptionCheck(), handle == 0);
}

template <auto kSet, auto kSetBitmap>
Answer set_both(const Things& t) {
    call(kSet, t.handle, t.strength, t.one);
    const Answer isSet = effects_answer(true);
    call(kSetBitmap, t.handle, t.table, t.bitmap, kWidth, kHeight);
    const Answer hasTable = effects_answer(is_unlocked(t.bitmap));
    return isSet == Answer::kDone ? hasTable : isSet;
}

// What opens while memory is short has to bear use.
template <auto kOpen, auto kUse, auto kClose>
Answer open_and_close(const Things& t) {
    const jlong handle = call(kOpen, t.xray);
    const Answer opened = effects_answer(handle != 0);
    if (opened != Answer::kDone) {
        return handle == 0 ? opened : Answer::kWrong;
    }
    kUse(t, handle);
    const Answer used = effects_answer(true);
    call(kClose, handle);
    return used;
}

void use_off_screen(const Things& t, jlong handle) {
    call(EFFECTS(filterApply), handle, t.bitmap, kWidth, kHeight);
}

void use_on_surface(const Things& /*things*/, jlong handle) {
    call(EFFECTS(surfaceFilterDraw), handle, 0, kWidth, kHeight, kWidth, kHeight);
}

constexpr Opened kNothing;
constexpr Opened kSweep = {nullptr, open_sweep, end_sweep};

// What waits for threads of its own, and what makes a whole context.
constexpr size_t kThreads = 20;
constexpr size_t kDear = 200;

const NativeCase kCases[] = {
    {"BlurRender.nativeProcess", kNeedsNone, kNothing, 1,
     [](const Things& t) {
         call(BLUR(nativeProcess), t.bitmap, kWidth, kHeight, 5, 0, 100);
         return picture_answer(t.bitmap);
     }},
    // As an application ends an off-screen filter: with it goes its context.
    {"FiltersRender.nativeCreate", kMayDoWithout, kNothing, kDear,
     [](const Things& t) {
         const jlong handle = call(FILTERS(nativeCreate), t.tableFilter);
         if (handle != 0) {
             call(FILTERS(nativeProcess), handle, t.bitmap);
         }
         destroy(handle);
         return answer(handle != 0 && is_unlocked(t.bitmap), handle == 0);
     }},
    {"FiltersRender.nativeOnSurfaceCreated FiltersRender.nativeOnSurfaceDestroyed", kMayDoWithout, kNothing, kThreads,
     [](const Things& t) {
         const jlong handle = call(FILTERS(nativeOnSurfaceCreated), t.xray, 1);
         call(FILTERS(nativeOnSurfaceDestroyed), handle);
         return answer(handle != 0, handle == 0);
     }},
    {"FiltersRender.nativeSetTexture FiltersRender.nativeOnDrawFrame", kMayDoWithout, on_surface("ImageFilterXray"), 1,
     [](const Things& t) {
         const GLuint texture = new_texture(kWidth, kHeight, picture().data());
         call(FILTERS(nativeSetTexture), t.handle, static_cast<jint>(texture), kWidth, kHeight, kWidth, kHeight);
         call(FILTERS(nativeOnDrawFrame), t.handle);
         glDeleteTextures(1, &texture);
         return Answer::kDone;
     }},
    {"FiltersRender.nativeSetBitmap FiltersRender.nativeSetParametersBitmap", kMayDoWithout,
     on_surface("ImageFilterTable"), 1,
     [](const Things& t) {
         call(FILTERS(nativeSetBitmap), t.handle, t.bitmap, kWidth, kHeight);
         call(FILTERS(nativeSetParametersBitmap), t.handle, t.table, t.bitmap);
         return answer(is_unlocked(t.bitmap), false);
     }},
    {"FiltersRender.nativeProcess", kNeedsMemory, off_screen("ImageFilterXray"), 1,
     [](const Things& t) {
         call(FILTERS(nativeProcess), t.handle, t.bitmap);
         return picture_answer(t.bitmap);
     }},
    {"FiltersRender.nativeSetParametersBoolean FiltersRender.nativeSetParametersInteger "
     "FiltersRender.nativeSetParametersFloat FiltersRender.nativeSetParametersDouble "
     "FiltersRender.nativeSetParametersLong FiltersRender.nativeSetParametersBooleanArray "
     "FiltersRender.nativeSetParametersIntegerArray FiltersRender.nativeSetParametersFloatArray "
     "FiltersRender.nativeSetParametersDoubleArray FiltersRender.nativeGetParameterType",
     kMayDoWithout, on_surface("ImageFilterDistorted"), 1,
     [](const Things& t) {
         call(FILTERS(nativeSetParametersBoolean), t.handle, t.strength, jboolean{1});
         call(FILTERS(nativeSetParametersInteger), t.handle, t.strength, 1);
         call(FILTERS(nativeSetParametersFloat), t.handle, t.strength, 1.0F);
         call(FILTERS(nativeSetParametersDouble), t.handle, t.strength, 1.0);
         call(FILTERS(nativeSetParametersLong), t.handle, t.strength, 0);
         call(FILTERS(nativeSetParametersBooleanArray), t.handle, t.vertices, t.booleans);
         call(FILTERS(nativeSetParametersIntegerArray), t.handle, t.vertices, t.integers);
         call(FILTERS(nativeSetParametersFloatArray), t.handle, t.vertices, t.floats);
         call(FILTERS(nativeSetParametersDoubleArray), t.handle, t.vertices, t.doubles);
         const jint type = call(FILTERS(nativeGetParameterType), t.handle, t.strength);
         return answer(type == PARAMETER_TYPE_FLOAT, type == -1);
     }},
    {"PanoramaModule.nativeProcess", kMayDoWithout, kSweep, 1,
     [](const Things& t) {
         const auto process = [&t](float gyroX, float gyroY) {
             return call_on(t.sweep, PANORAMA(nativeProcess), t.handle, t.sweepFrame, gyroX, gyroY);
         };
         // The first one of a sweep only sets the angles.
         process(10, 20);
         const jint result = process(11, 17.5F);
         const LocalFrame frame(16);
         const jint offset = java().int_field(t.sweep, "mOffsetX");
         return answer(result == 0 && offset == 70, result == 1 && offset == 0);
     }},
    {"PanoramaModule.nativeCreate PanoramaModule.nativeDestroy", kMayDoWithout, kNothing, kThreads,
     [](const Things&) {
         const jlong handle = call(PANORAMA(nativeCreate), 4, 2, 1);
         PanoramaInterface* panorama = reinterpret_cast<PanoramaInterface*>(handle);
         if (panorama == nullptr) {
             return Answer::kShort;
         }
         const auto push = [panorama] {
             int x = 0;
             int y = 0;
             unsigned char pixels[12] = {};
             panorama->addFrame(pixels, 10, 20, x, y);
         };
         push();
         PanoramaModulePeer::closeWithAFrameQueued(PanoramaModulePeer::moduleOf(*panorama), push,
                                                   [handle] { call(PANORAMA(nativeDestroy), handle); });
         return Answer::kDone;
     }},
    {"SuperCaptureMode.nativeCreate SuperCaptureMode.nativeProcess SuperCaptureMode.nativeDestroy", kMayDoWithout,
     kNothing, 1, [](const Things& t) { return burst_of(t.mode, t); }},
    // Without the callback, which makes a line for the log.
    {"SuperCaptureMode.nativeProcess", kMayDoWithout, kNothing, 1,
     [](const Things& t) { return burst_of(t.stamp, t); }},
    {"Natives.blur", kNeedsNone, kNothing, 1,
     [](const Things& t) {
         call(EFFECTS(blur), t.bitmap, kWidth, kHeight, 5, 0, 100);
         return effects_answer(picture_answer(t.bitmap) == Answer::kDone);
     }},
    {"Natives.palette", kNeedsMemory, kNothing, 10,
     [](const Things& t) {
         const jintArray colors = call(EFFECTS(palette), t.bitmap, kWidth, kHeight, 4);
         const Answer result = effects_answer(colors != nullptr && is_unlocked(t.bitmap));
         t.env->DeleteLocalRef(colors);
         return result;
     }},
    {"Natives.stamp", kNeedsMemory, kNothing, 10,
     [](const Things& t) {
         const jbyteArray frame = t.env->NewByteArray(640 * 480 * 2);
         const Answer result = effects_answer(call(EFFECTS(stamp), frame, 640, 480, t.stamp));
         t.env->DeleteLocalRef(frame);
         return result;
     }},
    {"Natives.panoramaOpen Natives.panoramaClose", kMayDoWithout, kNothing, kThreads,
     [](const Things&) {
         const jlong handle = call(EFFECTS(panoramaOpen), 4, 2, 1);
         call(EFFECTS(panoramaClose), handle);
         return effects_answer(handle != 0);
     }},
    {"Natives.panoramaFeed", kMayDoWithout, kNothing, kThreads,
     [](const Things& t) {
         const jlong handle = arrange(EFFECTS(panoramaOpen), 4, 2, 1);
         arrange(EFFECTS(panoramaFeed), handle, t.sweepFrame, 10.0F, 20.0F, t.integers);
         const jint code = call(EFFECTS(panoramaFeed), handle, t.sweepFrame, 10.0F, 20.0F, t.integers);
         arrange(EFFECTS(panoramaClose), handle);
         return code == PANORAMA_RESULT_TYPE_OUT_OF_MEMRORY ? Answer::kShort : effects_answer(code == 0);
     }},
    {"Natives.burstOpen Natives.burstPush Natives.burstMerge Natives.burstClose", kMayDoWithout, kNothing, kThreads,
     [](const Things& t) {
         const jlong handle = call(EFFECTS(burstOpen), 4, 2);
         const Answer opened = effects_answer(handle != 0);
         if (opened != Answer::kDone) {
             return opened;
         }
         call(EFFECTS(burstPush), handle, t.burstFrame);
         const Answer pushed = effects_answer(true);
         const jint count = pushed == Answer::kDone ? 1 : 0;
         const bool isMerged = call(EFFECTS(burstMerge), handle, count, t.burstFrame);
         call(EFFECTS(burstClose), handle);
         return pushed == Answer::kDone ? answer(isMerged, !isMerged) : pushed;
     }},
    {"Natives.setProgramCacheDirectory", kNeedsMemory, kNothing, 1,
     [](const Things& t) {
         const jstring directory = java().string((testing::TempDir() + "./././././././").c_str());
         const jstring error = call(EFFECTS(setProgramCacheDirectory), directory);
         arrange(EFFECTS(setProgramCacheDirectory), nullptr);
         t.env->DeleteLocalRef(directory);
         return answer(error == nullptr, error != nullptr);
     }},
    {"Natives.filterTable", kNeedsMemory, kNothing, 1,
     [](const Things& t) {
         const jobject filters = call(EFFECTS(filterTable));
         t.env->DeleteLocalRef(filters);
         return effects_answer(filters != nullptr);
     }},
    {"Natives.filterOpen Natives.filterClose", kMayDoWithout, kNothing, kDear,
     open_and_close<EFFECTS(filterOpen), use_off_screen, EFFECTS(filterClose)>},
    {"Natives.filterApply", kMayDoWithout, effects_off_screen("ImageFilterXray"), 1,
     [](const Things& t) {
         call(EFFECTS(filterApply), t.handle, t.bitmap, kWidth, kHeight);
         const Answer result = picture_answer(t.bitmap);
         return result == Answer::kDone ? effects_answer(true) : result;
     }},
    {"Natives.filterSet Natives.filterSetBitmap", kMayDoWithout, effects_off_screen("ImageFilterTable"), 1,
     set_both<EFFECTS(filterSet), EFFECTS(filterSetBitmap)>},
    {"Natives.surfaceFilterOpen Natives.surfaceFilterClose", kMayDoWithout, kNothing, 20,
     open_and_close<EFFECTS(surfaceFilterOpen), use_on_surface, EFFECTS(surfaceFilterClose)>},
    {"Natives.surfaceFilterDraw", kMayDoWithout, effects_on_surface("ImageFilterDistorted"), 1,
     [](const Things& t) {
         const jint camera = arrange(EFFECTS(createCameraTexture));
         call(EFFECTS(surfaceFilterDraw), t.handle, camera, kWidth, kHeight, kWidth, kHeight);
         arrange(EFFECTS(deleteCameraTexture), camera);
         return effects_answer(true);
     }},
    {"Natives.surfaceFilterSet Natives.surfaceFilterSetBitmap", kMayDoWithout, effects_on_surface("ImageFilterTable"),
     1, set_both<EFFECTS(surfaceFilterSet), EFFECTS(surfaceFilterSetBitmap)>},
    {"Natives.createCameraTexture Natives.deleteCameraTexture", kNeedsNone, kNothing, 1,
     [](const Things&) {
         const jint texture = call(EFFECTS(createCameraTexture));
         call(EFFECTS(deleteCameraTexture), texture);
         return effects_answer(texture != 0);
     }},
};

}  // namespace

NativeThings::NativeThings(const Opened& opened)
    : bitmap(java().new_bitmap(kWidth, kHeight, picture())),
      sweep(java().new_object("com/tervo/media/effects/pano/PanoramaModule", "()V")),
      mode(java().new_object("com/tervo/media/supercapture/mode/SuperCaptureMode", "()V")),
      handle(opened.open == nullptr ? 0 : opened.open(opened.filter)),
      m_Close(opened.close) {
    const std::vector<jbyte> bright(16, 100);
    env->SetByteArrayRegion(burstFrame, 0, 16, bright.data());
}

NativeThings::~NativeThings() {
    if (m_Close != nullptr) {
        m_Close(handle);
    }
}

std::span<const NativeCase> native_cases() {
    return kCases;
}
