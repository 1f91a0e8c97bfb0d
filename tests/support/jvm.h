// A Java virtual machine inside the test program, started with -Xcheck:jni on first use, one for the whole process.
//
// Its class path holds the product's classes and those of tests/java; its library path leads to the built
// libkorvane.so, so a product class that a test touches loads the real library. That library is a second copy beside
// the static one that the test links: its log lines come out on standard error (see StandardErrorCapture), not in a
// LogCapture.
#ifndef KORVANE_TESTS_SUPPORT_JVM_H_
#define KORVANE_TESTS_SUPPORT_JVM_H_

#include <gtest/gtest.h>
#include <jni.h>

#include <string>
#include <vector>

// The environment of the calling thread, which is attached if it was not. Aborts when no machine can be had.
JNIEnv* jvm_env();

// Base of tests that call Java. Each test runs in a local frame of its own and must leave no exception behind.
class JvmTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // `arguments` as in JNI's variadic calls. All fail the test and give null or 0 on a missing name or an exception.
    jobject new_object(const char* className, const char* signature, ...);
    void call_void(jobject object, const char* name, const char* signature, ...);
    jint call_int(jobject object, const char* name, const char* signature, ...);
    jlong call_long(jobject object, const char* name, const char* signature, ...);
    jobject call_object(jobject object, const char* name, const char* signature, ...);
    jobject call_static_object(const char* className, const char* name, const char* signature, ...);

    jint int_field(jobject object, const char* name);
    void set_field(jobject object, const char* name, jint value);
    void set_field(jobject object, const char* name, jlong value);
    void set_field(jobject object, const char* name, bool value);
    void set_field(jobject object, const char* name, jfloat value);

    jstring string(const char* text);

    // A bitmap of `width` x `height` with these RGBA bytes, and the bytes of a bitmap.
    jobject new_bitmap(int width, int height, const std::vector<unsigned char>& pixels);
    std::vector<unsigned char> bitmap_pixels(jobject bitmap);
    jint lock_count(jobject bitmap) { return call_int(bitmap, "getLockCount", "()I"); }

    JNIEnv* env = nullptr;

  private:
    jmethodID method(jobject object, const char* name, const char* signature);
    jfieldID field(jobject object, const char* name, const char* signature);
    void expect_no_exception(const char* what);
};

#endif  // KORVANE_TESTS_SUPPORT_JVM_H_
