// SPDX-License-Identifier: Apache-2.0
// Good calls of every native method, as functions of the program and with real Java objects.
#ifndef KORVANE_TESTS_SUPPORT_NATIVE_CASES_H_
#define KORVANE_TESTS_SUPPORT_NATIVE_CASES_H_

#include <span>

#include "tests/shortage/shortage_case.h"
#include "tests/support/jvm.h"

// Each program says what stands around a call of a case: enter_native() gives the environment for it.
JNIEnv* enter_native(JNIEnv* env);
void leave_native();

// Whether the program raised a Java exception in this attempt.
bool was_raised();

class NativeTest : public JvmTest {
  public:
    // The test that runs.
    static NativeTest* java;

  protected:
    void SetUp() override {
        JvmTest::SetUp();
        java = this;
    }
};

// References that are made while it lives go with it.
struct LocalFrame {
    explicit LocalFrame(jint capacity) { NativeTest::java->env->PushLocalFrame(capacity); }
    ~LocalFrame() { NativeTest::java->env->PopLocalFrame(nullptr); }
};

// What a case works on, besides the things that all get.
struct Opened {
    const char* filter = nullptr;
    jlong (*open)(const char* filter) = nullptr;
    void (*close)(jlong handle) = nullptr;
};

// What the calls get. Made once for many calls.
class NativeThings {
  public:
    explicit NativeThings(const Opened& opened);
    ~NativeThings();
    NativeThings(const NativeThings&) = delete;
    NativeThings& operator=(const NativeThings&) = delete;

    JNIEnv* const env = NativeTest::java->env;
    const jobject bitmap;
    const jstring strength = text("mStrength");
    const jstring vertices = text("mTexVertices");
    const jstring table = text("mFilterBitmap");
    const jstring xray = text("ImageFilterXray");
    const jstring tableFilter = text("ImageFilterTable");
    const jstring stamp = text("2026");
    const jbooleanArray booleans = env->NewBooleanArray(64);
    const jintArray integers = env->NewIntArray(8);
    const jfloatArray floats = env->NewFloatArray(8);
    const jfloatArray one = env->NewFloatArray(1);
    const jdoubleArray doubles = env->NewDoubleArray(8);
    const jbyteArray sweepFrame = env->NewByteArray(12);
    const jbyteArray burstFrame = env->NewByteArray(16);
    const jobject sweep;
    const jobject mode;
    const jlong handle;

  private:
    static jstring text(const char* characters) { return NativeTest::java->string(characters); }

    void (*const m_Close)(jlong handle);
};

enum Memory { kNeedsMemory, kMayDoWithout, kNeedsNone };

struct NativeCase {
    // "Class.method" for each, with blanks between.
    const char* methods;
    Memory memory;
    Opened opened;
    // How many times dearer than most.
    size_t cost;
    Answer (*run)(const NativeThings& things);
};

// Needs a current surface.
std::span<const NativeCase> native_cases();

#endif  // KORVANE_TESTS_SUPPORT_NATIVE_CASES_H_
