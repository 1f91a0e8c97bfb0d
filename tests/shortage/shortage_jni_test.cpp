// SPDX-License-Identifier: Apache-2.0
// The native methods while memory is short, and while calls into Java raise exceptions.
#include <optional>
#include <utility>

#include "frameworks/gpu/program_cache.h"
#include "platform/bitmap.h"
#include "platform/log.h"
#include "tests/support/gl_surface.h"
#include "tests/support/native_cases.h"

namespace {

using Functions = JNINativeInterface_;

// Only inside a case's calls allocations fail and calls into Java raise.
std::optional<Shortage::Armed> gArmed;
const Functions* gReal = nullptr;
Functions gRaising;
size_t gCallsLeft = 0;
bool gHasRaised = false;

// Nothing raises while it lives: what Java runs meanwhile calls such functions too.
class Unarmed {
  public:
    explicit Unarmed(JNIEnv* env) : m_Env(env), m_Before(std::exchange(env->functions, gReal)) {}
    ~Unarmed() { m_Env->functions = m_Before; }
    Unarmed(const Unarmed&) = delete;
    Unarmed& operator=(const Unarmed&) = delete;

  private:
    JNIEnv* m_Env;
    const Functions* m_Before;
};

// In place of one function, of which the call that it is the turn of raises a Java exception and gives back nothing.
template <auto kFunction>
struct Raising;
template <typename Result, typename... Arguments, Result (*Functions::*kFunction)(JNIEnv*, Arguments...)>
struct Raising<kFunction> {
    static Result call(JNIEnv* env, Arguments... arguments) {
        const Unarmed unarmed(env);
        if (gCallsLeft == 0 || --gCallsLeft > 0) {
            return (gReal->*kFunction)(env, arguments...);
        }
        gHasRaised = true;
        env->ThrowNew(env->FindClass("java/lang/IllegalMonitorStateException"), "raised by the test");
        return Result();
    }
};

// Those that may raise: none that give things back, or read a field or a length.
template <auto... kFunctions>
void arm() {
    gRaising = *gReal;
    ((gRaising.*kFunctions = Raising<kFunctions>::call), ...);
}

}  // namespace

// On a device these belong to the system and call no Java. The linker sends the library's calls here.
#define CALLING_NO_JAVA(name, parameters, ...) \
    extern "C" int __real_##name parameters;   \
    extern "C" int __wrap_##name parameters {  \
        const Unarmed unarmed(env);            \
        return __real_##name(__VA_ARGS__);     \
    }
CALLING_NO_JAVA(AndroidBitmap_getInfo, (JNIEnv * env, jobject bitmap, AndroidBitmapInfo* info), env, bitmap, info)
CALLING_NO_JAVA(AndroidBitmap_lockPixels, (JNIEnv * env, jobject bitmap, void** pixels), env, bitmap, pixels)
CALLING_NO_JAVA(AndroidBitmap_unlockPixels, (JNIEnv * env, jobject bitmap), env, bitmap)

JNIEnv* enter_native(JNIEnv* env) {
    env->functions = gCallsLeft > 0 ? &gRaising : gReal;
    gArmed.emplace();
    return env;
}

void leave_native() {
    gArmed.reset();
    JNIEnv* env = NativeTest::java->env;
    env->functions = gReal;
    // What was raised does not stand in the way of the test's own calls.
    if (gHasRaised) {
        env->ExceptionClear();
    }
}

bool was_raised() {
    return gHasRaised;
}

namespace {

class ShortageJni : public NativeTest {
  protected:
    // A log that somebody reads takes memory for each line.
    void SetUp() override {
        NativeTest::SetUp();
        gReal = env->functions;
        set_android_log_sink([](void*, int, const char*, const char*) {}, nullptr);
        // The setting takes memory once and keeps it.
        korvane::program_cache_directory();
    }
    void TearDown() override {
        set_android_log_sink(nullptr, nullptr);
        NativeTest::TearDown();
    }
};

Answer attempt(const NativeCase& nativeCase) {
    const LocalFrame frame(64);
    const NativeThings things(nativeCase.opened);
    return nativeCase.run(things);
}

TEST_F(ShortageJni, EachAllocationFails) {
    gCallsLeft = 0;
    for (const NativeCase& nativeCase : native_cases()) {
        const GlSurface surface(16, 12);
        fail_each_allocation({nativeCase.methods, [&](Shortage&) { return attempt(nativeCase); },
                              nativeCase.memory == kMayDoWithout, nativeCase.memory == kNeedsNone});
    }
}

// What the library then answers is its own business, but it returns, leaks nothing and leaves nothing locked.
TEST_F(ShortageJni, EachCallIntoJavaRaises) {
    arm<&Functions::FindClass, &Functions::GetMethodID, &Functions::GetStaticMethodID, &Functions::GetFieldID,
        &Functions::CallVoidMethodV, &Functions::CallIntMethodV, &Functions::CallObjectMethodV, &Functions::NewObjectV,
        &Functions::NewStringUTF, &Functions::GetStringUTFChars, &Functions::NewIntArray, &Functions::NewObjectArray,
        &Functions::SetObjectArrayElement, &Functions::SetIntArrayRegion, &Functions::GetFloatArrayRegion,
        &Functions::SetFloatArrayRegion, &Functions::GetBooleanArrayElements, &Functions::GetByteArrayElements,
        &Functions::GetIntArrayElements, &Functions::GetFloatArrayElements, &Functions::GetDoubleArrayElements>();
    constexpr size_t kMostCalls = 500;
    for (const NativeCase& nativeCase : native_cases()) {
        const GlSurface surface(16, 12);
        size_t n = 0;
        do {
            SCOPED_TRACE(testing::Message() << nativeCase.methods << ", call into Java " << ++n);
            const Shortage memory(0);
            gCallsLeft = n;
            gHasRaised = false;
            const Answer answer = attempt(nativeCase);
            EXPECT_EQ(Shortage::live_blocks(), 0U) << "a leak";
            EXPECT_TRUE(gHasRaised || answer == Answer::kDone);
        } while (gHasRaised && n < kMostCalls);
        EXPECT_FALSE(gHasRaised) << nativeCase.methods << " calls Java without end";
    }
}

}  // namespace
