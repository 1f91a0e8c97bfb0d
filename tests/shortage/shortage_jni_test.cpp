// SPDX-License-Identifier: Apache-2.0
// The native methods while memory is short, and while calls into Java raise exceptions. They are called as functions of
// this program, with real Java objects.
#include "applications/filters/gpu_image_filter_base.h"
#include "frameworks/gpu/program_cache.h"
#include "platform/log.h"
#include "tests/applications/pano/panorama_module_peer.h"
#include "tests/shortage/shortage_case.h"
#include "tests/shortage/throwing_env.h"
#include "tests/support/gl_surface.h"
#include "tests/support/jvm.h"
#include "tests/support/native_methods.h"
#include "tests/support/random_bytes.h"

namespace {

constexpr int kWidth = 16;
constexpr int kHeight = 12;

class ShortageJni : public JvmTest {
  public:
    using JvmTest::bitmap_pixels;
    using JvmTest::env;
    using JvmTest::int_field;
    using JvmTest::lock_count;
    using JvmTest::new_bitmap;
    using JvmTest::new_object;
    using JvmTest::string;

  protected:
    // A log that somebody reads takes memory for each line.
    void SetUp() override {
        JvmTest::SetUp();
        java = this;
        set_android_log_sink([](void*, int, const char*, const char*) {}, nullptr);
        // The setting takes memory once and keeps it.
        korvane::program_cache_directory();
    }
    void TearDown() override {
        set_android_log_sink(nullptr, nullptr);
        JvmTest::TearDown();
    }

    // Java objects of one attempt.
    struct LocalFrame {
        LocalFrame() { ShortageJni::java->env->PushLocalFrame(64); }
        ~LocalFrame() { ShortageJni::java->env->PopLocalFrame(nullptr); }
    };

    void fail_each(std::span<const ShortageCase> cases) {
        for (const ShortageCase& shortageCase : cases) {
            fail_each_allocation<LocalFrame>(shortageCase);
            raise_at_each_call(shortageCase);
        }
    }

    // Each call into Java raises once. What the library then answers is its own business, but it returns, leaks nothing
    // and leaves nothing locked.
    static void raise_at_each_call(const ShortageCase& shortageCase) {
        constexpr size_t kMostCalls = 500;
        for (size_t n = 1; n < kMostCalls; ++n) {
            const LocalFrame frame;
            SCOPED_TRACE(testing::Message() << shortageCase.name << ", call into Java " << n);
            Shortage memory(0);
            const ThrowingEnv throwing(ShortageJni::java->env, n);
            const Answer answer = shortageCase.run(memory);
            EXPECT_EQ(Shortage::live_blocks(), 0U) << "a leak";
            if (!ThrowingEnv::has_raised()) {
                EXPECT_EQ(answer, Answer::kDone);
                return;
            }
        }
        ADD_FAILURE() << shortageCase.name << " calls Java without end";
    }

  public:
    // The test that runs, for the functions of the tables.
    static ShortageJni* java;
};
ShortageJni* ShortageJni::java = nullptr;

ShortageJni& java() {
    return *ShortageJni::java;
}

// A native method on an object. Only inside during() its calls into Java may raise.
template <typename Result, typename This, typename... Parameters, typename... Arguments>
Result call_on(jobject thiz, Result (*method)(JNIEnv*, This, Parameters...), Arguments... arguments) {
    struct Clear {
        ~Clear() { ThrowingEnv::clear(); }
    };
    const Clear afterwards;
    JNIEnv* env = Shortage::is_armed() ? ThrowingEnv::of(java().env) : java().env;
    return method(env, static_cast<This>(thiz), arguments...);
}

// One that is static, or does without its object.
template <typename Method, typename... Arguments>
auto call(Method method, Arguments... arguments) {
    return call_on(nullptr, method, arguments...);
}

const std::vector<unsigned char>& picture() {
    static const std::vector<unsigned char> bytes = random_bytes(kWidth * kHeight * 4, 6);
    return bytes;
}

jobject new_picture() {
    return java().new_bitmap(kWidth, kHeight, picture());
}

bool is_unlocked(jobject bitmap) {
    const jint locks = java().lock_count(bitmap);
    EXPECT_EQ(locks, 0);
    return locks == 0;
}

// A bitmap is given back unlocked, and either worked on or as it was.
Answer picture_answer(jobject bitmap) {
    if (!is_unlocked(bitmap)) {
        return Answer::kWrong;
    }
    const bool isAsBefore = java().bitmap_pixels(bitmap) == picture();
    return answer(!isAsBefore, isAsBefore);
}

// Lets the filter behind a handle go, also what it keeps when it is only deleted.
void destroy(jlong handle) {
    if (handle != 0) {
        reinterpret_cast<ImageFilterBaseGL*>(handle)->release();
        call(FILTERS(nativeOnSurfaceDestroyed), handle);
    }
}

// For a handle or 0.
template <typename Open, typename Close>
auto opened(const Open& open, const Close& close) {
    return [=](Shortage& s) {
        const jlong handle = s.during(open);
        close(handle);
        return answer(handle != 0, handle == 0);
    };
}

// `method` on a filter for the current surface. It has no answer that could be seen.
template <typename Method>
Answer on_surface(Shortage& s, const char* name, const Method& method) {
    const jlong handle = call(FILTERS(nativeOnSurfaceCreated), java().string(name), 1);
    s.during([&] { method(handle); });
    destroy(handle);
    return Answer::kDone;
}

// `method` takes a handle, a bitmap and the name of a table.
template <typename Method>
auto bitmap_on_surface(const char* name, const Method& method) {
    return [=](Shortage& s) {
        const jobject bitmap = new_picture();
        const jstring key = java().string("mFilterBitmap");
        on_surface(s, name, [&](jlong handle) { method(handle, bitmap, key); });
        return answer(is_unlocked(bitmap), false);
    };
}

const ShortageCase kFilters[] = {
    {"nativeCreate",
     [](Shortage& s) {
         const jstring name = java().string("ImageFilterTable");
         return opened([=] { return call(FILTERS(nativeCreate), name); }, destroy)(s);
     },
     true},
    {"nativeOnSurfaceCreated",
     [](Shortage& s) {
         const jstring name = java().string("ImageFilterXray");
         return opened([=] { return call(FILTERS(nativeOnSurfaceCreated), name, 0); }, destroy)(s);
     },
     true},
    {"nativeOnSurfaceDestroyed",
     [](Shortage& s) {
         const jlong handle = call(FILTERS(nativeOnSurfaceCreated), java().string("ImageFilterXray"), 1);
         s.during([&] { call(FILTERS(nativeOnSurfaceDestroyed), handle); });
         return Answer::kDone;
     },
     true},
    {"nativeSetTexture and nativeOnDrawFrame",
     [](Shortage& s) {
         const GLuint texture = new_texture(kWidth, kHeight, picture().data());
         on_surface(s, "ImageFilterXray", [&](jlong handle) {
             const auto name = static_cast<jint>(texture);
             call(FILTERS(nativeSetTexture), handle, name, kWidth, kHeight, kWidth, kHeight);
             call(FILTERS(nativeOnDrawFrame), handle);
         });
         glDeleteTextures(1, &texture);
         return Answer::kDone;
     },
     true},
    {"nativeSetBitmap",
     bitmap_on_surface("ImageFilterXray",
                       [](jlong handle, jobject bitmap, jstring) {
                           call(FILTERS(nativeSetBitmap), handle, bitmap, kWidth, kHeight);
                       }),
     true},
    {"nativeSetParametersBitmap",
     bitmap_on_surface("ImageFilterTable",
                       [](jlong handle, jobject bitmap, jstring key) {
                           call(FILTERS(nativeSetParametersBitmap), handle, key, bitmap);
                       }),
     true},
    {"nativeProcess",
     [](Shortage& s) {
         const jobject bitmap = new_picture();
         const jlong handle = call(FILTERS(nativeCreate), java().string("ImageFilterXray"));
         s.during([&] { call(FILTERS(nativeProcess), handle, bitmap); });
         destroy(handle);
         return picture_answer(bitmap);
     }},
    {"nativeGetParameterType",
     [](Shortage& s) {
         jint type = 0;
         const jstring key = java().string("mStrength");
         on_surface(s, "ImageFilterDistorted",
                    [&](jlong handle) { type = call(FILTERS(nativeGetParameterType), handle, key); });
         return answer(type == PARAMETER_TYPE_FLOAT, type == -1);
     },
     true},
    {"The typed setters",
     [](Shortage& s) {
         const jstring one = java().string("mStrength");
         const jstring eight = java().string("mTexVertices");
         const jbooleanArray booleans = java().env->NewBooleanArray(64);
         const jintArray integers = java().env->NewIntArray(8);
         const jfloatArray floats = java().env->NewFloatArray(8);
         const jdoubleArray doubles = java().env->NewDoubleArray(8);
         return on_surface(s, "ImageFilterDistorted", [&](jlong handle) {
             call(FILTERS(nativeSetParametersBoolean), handle, one, jboolean{1});
             call(FILTERS(nativeSetParametersInteger), handle, one, 1);
             call(FILTERS(nativeSetParametersFloat), handle, one, 1.0F);
             call(FILTERS(nativeSetParametersDouble), handle, one, 1.0);
             call(FILTERS(nativeSetParametersLong), handle, one, 0);
             call(FILTERS(nativeSetParametersBooleanArray), handle, eight, booleans);
             call(FILTERS(nativeSetParametersIntegerArray), handle, eight, integers);
             call(FILTERS(nativeSetParametersFloatArray), handle, eight, floats);
             call(FILTERS(nativeSetParametersDoubleArray), handle, eight, doubles);
         });
     },
     true},
};

// A sweep goes without nativeDestroy, which waits for one more frame.
void end_sweep(jlong handle) {
    delete reinterpret_cast<PanoramaInterface*>(handle);
}

const ShortageCase kOthers[] = {
    {"BlurRender.nativeProcess",
     [](Shortage& s) {
         const jobject bitmap = new_picture();
         s.during([&] { call(BLUR(nativeProcess), bitmap, kWidth, kHeight, 5, 0, 100); });
         return picture_answer(bitmap);
     },
     false, true},
    {"PanoramaModule.nativeCreate", opened([] { return call(PANORAMA(nativeCreate), 4, 2, 1); }, end_sweep), true},
    {"PanoramaModule.nativeProcess",
     [](Shortage& s) {
         const jobject thiz = java().new_object("com/tervo/media/effects/pano/PanoramaModule", "()V");
         const jlong handle = call(PANORAMA(nativeCreate), 4, 2, 1);
         const jbyteArray frame = java().env->NewByteArray(12);
         const auto process = [&](float gyroX, float gyroY) {
             return call_on(thiz, PANORAMA(nativeProcess), handle, frame, gyroX, gyroY);
         };
         process(10, 20);
         const jint result = s.during([&] { return process(11, 17.5F); });
         end_sweep(handle);
         const jint offset = java().int_field(thiz, "mOffsetX");
         return answer(result == 0 && offset == 70, result == 1 && offset == 0);
     },
     true},
    {"PanoramaModule.nativeDestroy",
     [](Shortage& s) {
         const jlong handle = call(PANORAMA(nativeCreate), 4, 2, 1);
         PanoramaInterface* panorama = reinterpret_cast<PanoramaInterface*>(handle);
         const auto push = [&] {
             int x = 0;
             int y = 0;
             unsigned char pixels[12] = {};
             panorama->addFrame(pixels, 10, 20, x, y);
         };
         push();
         PanoramaModulePeer::closeWithAFrameQueued(PanoramaModulePeer::moduleOf(*panorama), push, [&] {
             s.during([&] { PANORAMA(nativeDestroy)(nullptr, nullptr, handle); });
         });
         return Answer::kDone;
     },
     true},
    {"SuperCaptureMode.nativeCreate",
     opened([] { return call(MODE(nativeCreate), 4, 2, 1); }, [](jlong handle) { call(MODE(nativeDestroy), handle); }),
     true},
    {"SuperCaptureMode.nativeProcess and nativeDestroy",
     [](Shortage& s) {
         JNIEnv* env = java().env;
         // Without the callback, which makes a line for the log.
         const jobject thiz = java().string("no callback here");
         const jlong handle = MODE(nativeCreate)(env, thiz, 4, 2, 1);
         const jbyteArray frame = env->NewByteArray(8);
         const jbyte bright[8] = {100, 100, 100, 100, 100, 100, 100, 100};
         env->SetByteArrayRegion(frame, 0, 8, bright);
         s.during([&] {
             call_on(thiz, MODE(nativeProcess), handle, frame);
             call(MODE(nativeDestroy), handle);
         });
         return answer(!env->ExceptionCheck(), false);
     },
     true},
};

// A call that could not be done leaves an IllegalStateException.
Answer effects_answer(bool isDone) {
    // The exception that the test raised is gone already.
    if (ThrowingEnv::has_raised()) {
        return answer(false, !isDone);
    }
    JNIEnv* env = java().env;
    const jthrowable exception = env->ExceptionOccurred();
    if (exception == nullptr) {
        return answer(isDone, false);
    }
    env->ExceptionClear();
    return answer(false, env->IsInstanceOf(exception, env->FindClass("java/lang/IllegalStateException")) == JNI_TRUE);
}

// All calls on one filter, which is open on the surface or off screen.
struct FilterCalls {
    jlong (*open)(JNIEnv*, jclass, jstring);
    void (*set)(JNIEnv*, jclass, jlong, jstring, jfloatArray);
    void (*setBitmap)(JNIEnv*, jclass, jlong, jstring, jobject, jint, jint);
    void (*close)(JNIEnv*, jclass, jlong);
};

template <typename Work>
Answer effects_filter_answer(Shortage& s, const FilterCalls& calls, const char* filter, const Work& work) {
    const jstring name = java().string(filter);
    const jstring strength = java().string("mStrength");
    const jfloatArray value = java().env->NewFloatArray(1);
    const jlong handle = s.during([&] { return call(calls.open, name); });
    const Answer opened = effects_answer(handle != 0);
    if (opened != Answer::kDone) {
        return handle == 0 ? opened : Answer::kWrong;
    }
    s.during([&] { call(calls.set, handle, strength, value); });
    const Answer set = effects_answer(true);
    const Answer worked = work(handle);
    s.during([&] { call(calls.close, handle); });
    return set == Answer::kDone ? worked : set;
}

constexpr FilterCalls kOffscreen = {EFFECTS(filterOpen), EFFECTS(filterSet), EFFECTS(filterSetBitmap),
                                    EFFECTS(filterClose)};
constexpr FilterCalls kOnSurface = {EFFECTS(surfaceFilterOpen), EFFECTS(surfaceFilterSet),
                                    EFFECTS(surfaceFilterSetBitmap), EFFECTS(surfaceFilterClose)};

Answer table_answer(Shortage& s, const FilterCalls& calls) {
    const jobject bitmap = new_picture();
    const jstring key = java().string("mFilterBitmap");
    return effects_filter_answer(s, calls, "ImageFilterTable", [&](jlong handle) {
        s.during([&] { call(calls.setBitmap, handle, key, bitmap, kWidth, kHeight); });
        return effects_answer(is_unlocked(bitmap));
    });
}

const ShortageCase kEffects[] = {
    {"blur",
     [](Shortage& s) {
         const jobject bitmap = new_picture();
         s.during([&] { call(EFFECTS(blur), bitmap, kWidth, kHeight, 5, 0, 100); });
         return effects_answer(picture_answer(bitmap) == Answer::kDone);
     },
     false, true},
    {"palette",
     [](Shortage& s) {
         const jobject bitmap = new_picture();
         const jintArray colors = s.during([&] { return call(EFFECTS(palette), bitmap, kWidth, kHeight, 4); });
         return effects_answer(colors != nullptr && is_unlocked(bitmap));
     }},
    {"stamp",
     [](Shortage& s) {
         const jbyteArray frame = java().env->NewByteArray(640 * 480 * 2);
         const jstring text = java().string("2026");
         return effects_answer(s.during([&] { return call(EFFECTS(stamp), frame, 640, 480, text); }));
     }},
    {"panoramaOpen and panoramaClose",
     [](Shortage& s) {
         const jlong handle = s.during([] { return call(EFFECTS(panoramaOpen), 4, 2, 1); });
         s.during([&] { call(EFFECTS(panoramaClose), handle); });
         return effects_answer(handle != 0);
     },
     true},
    {"panoramaFeed",
     [](Shortage& s) {
         const jlong handle = call(EFFECTS(panoramaOpen), 4, 2, 1);
         const jbyteArray frame = java().env->NewByteArray(12);
         const jintArray result = java().env->NewIntArray(3);
         const auto feed = [&] { return call(EFFECTS(panoramaFeed), handle, frame, 10.0F, 20.0F, result); };
         feed();
         const jint code = s.during(feed);
         call(EFFECTS(panoramaClose), handle);
         return code == PANORAMA_RESULT_TYPE_OUT_OF_MEMRORY ? Answer::kShort : effects_answer(code == 0);
     },
     true},
    {"A burst",
     [](Shortage& s) {
         const jbyteArray frame = java().env->NewByteArray(4 * 2 * 2);
         const jlong handle = s.during([&] { return call(EFFECTS(burstOpen), 4, 2); });
         const Answer opened = effects_answer(handle != 0);
         if (opened != Answer::kDone) {
             return opened;
         }
         s.during([&] { call(EFFECTS(burstPush), handle, frame); });
         const Answer pushed = effects_answer(true);
         const jint count = pushed == Answer::kDone ? 1 : 0;
         const bool isMerged = s.during([&] { return call(EFFECTS(burstMerge), handle, count, frame); });
         s.during([&] { call(EFFECTS(burstClose), handle); });
         return pushed == Answer::kDone ? answer(isMerged, !isMerged) : pushed;
     },
     true},
    {"setProgramCacheDirectory",
     [](Shortage& s) {
         const jstring directory = java().string((testing::TempDir() + "./././././././").c_str());
         const jstring error = s.during([&] { return call(EFFECTS(setProgramCacheDirectory), directory); });
         call(EFFECTS(setProgramCacheDirectory), nullptr);
         return answer(error == nullptr, error != nullptr);
     }},
    {"filterTable",
     [](Shortage& s) { return effects_answer(s.during([] { return call(EFFECTS(filterTable)); }) != nullptr); }},
    {"filterOpen, filterSet, filterApply and filterClose",
     [](Shortage& s) {
         return effects_filter_answer(s, kOffscreen, "ImageFilterXray", [&](jlong handle) {
             const jobject bitmap = new_picture();
             s.during([&] { call(EFFECTS(filterApply), handle, bitmap, kWidth, kHeight); });
             const Answer picture = picture_answer(bitmap);
             return picture == Answer::kDone ? effects_answer(true) : picture;
         });
     },
     true},
    {"surfaceFilterOpen, surfaceFilterSet, surfaceFilterDraw and surfaceFilterClose",
     [](Shortage& s) {
         const jint texture = call(EFFECTS(createCameraTexture));
         const Answer result = effects_filter_answer(s, kOnSurface, "ImageFilterDistorted", [&](jlong handle) {
             s.during([&] { call(EFFECTS(surfaceFilterDraw), handle, texture, kWidth, kHeight, kWidth, kHeight); });
             return effects_answer(true);
         });
         call(EFFECTS(deleteCameraTexture), texture);
         return result;
     },
     true},
    {"filterSetBitmap", [](Shortage& s) { return table_answer(s, kOffscreen); }, true},
    {"surfaceFilterSetBitmap", [](Shortage& s) { return table_answer(s, kOnSurface); }, true},
    {"createCameraTexture",
     [](Shortage& s) {
         const jint texture = s.during([] { return call(EFFECTS(createCameraTexture)); });
         s.during([&] { call(EFFECTS(deleteCameraTexture), texture); });
         return effects_answer(texture != 0);
     },
     false, true},
};

TEST_F(ShortageJni, OfTheFilters) {
    const GlSurface surface(kWidth, kHeight);
    fail_each(kFilters);
}

TEST_F(ShortageJni, OfTheJavaLayer) {
    const GlSurface surface(kWidth, kHeight);
    fail_each(kEffects);
}

TEST_F(ShortageJni, OfTheOthers) {
    fail_each(kOthers);
}

}  // namespace
