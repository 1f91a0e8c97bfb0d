// SPDX-License-Identifier: Apache-2.0
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

  public:
    // Arguments as in JNI's variadic calls. All fail the test and give null or 0 on a missing name or an exception.
    template <typename... Arguments>
    jobject new_object(const char* className, const char* signature, Arguments... arguments) {
        const jclass type = find_class(className);
        const jmethodID id = type == nullptr ? nullptr : env->GetMethodID(type, "<init>", signature);
        return checked(id == nullptr ? nullptr : env->NewObject(type, id, arguments...), className);
    }
    template <typename... Arguments>
    jobject call_static_object(const char* className, const char* name, const char* signature, Arguments... arguments) {
        const jclass type = find_class(className);
        const jmethodID id = type == nullptr ? nullptr : env->GetStaticMethodID(type, name, signature);
        return checked(id == nullptr ? nullptr : env->CallStaticObjectMethod(type, id, arguments...), name);
    }
    template <typename... Arguments>
    void call_void(jobject object, const char* name, const char* signature, Arguments... arguments) {
        if (const jmethodID id = method(object, name, signature)) {
            env->CallVoidMethod(object, id, arguments...);
            expect_no_exception(name);
        }
    }
    template <typename... Arguments>
    jint call_int(jobject object, const char* name, const char* signature, Arguments... arguments) {
        return call<jint>(&JNIEnv::CallIntMethod, object, name, signature, arguments...);
    }
    template <typename... Arguments>
    jlong call_long(jobject object, const char* name, const char* signature, Arguments... arguments) {
        return call<jlong>(&JNIEnv::CallLongMethod, object, name, signature, arguments...);
    }
    template <typename... Arguments>
    jobject call_object(jobject object, const char* name, const char* signature, Arguments... arguments) {
        return call<jobject>(&JNIEnv::CallObjectMethod, object, name, signature, arguments...);
    }

    jint int_field(jobject object, const char* name) { return env->GetIntField(object, field(object, name, "I")); }
    void set_field(jobject object, const char* name, jint value) {
        env->SetIntField(object, field(object, name, "I"), value);
    }
    void set_field(jobject object, const char* name, jlong value) {
        env->SetLongField(object, field(object, name, "J"), value);
    }
    void set_field(jobject object, const char* name, bool value) {
        env->SetBooleanField(object, field(object, name, "Z"), value ? JNI_TRUE : JNI_FALSE);
    }

    jstring string(const char* text);  // null for null

    // A bitmap of `width` x `height` with these RGBA bytes, and the bytes of a bitmap.
    jobject new_bitmap(int width, int height, const std::vector<unsigned char>& pixels);
    std::vector<unsigned char> bitmap_pixels(jobject bitmap);
    // Runs a class of JUnit tests; what has failed, or nothing.
    std::string junit_failures(const char* className);

    jint lock_count(jobject bitmap) { return call_int(bitmap, "getLockCount", "()I"); }

    JNIEnv* env = nullptr;

  private:
    template <typename Result, typename... Arguments>
    Result call(Result (JNIEnv::*function)(jobject, jmethodID, ...), jobject object, const char* name,
                const char* signature, Arguments... arguments) {
        const jmethodID id = method(object, name, signature);
        return checked(id == nullptr ? Result() : (env->*function)(object, id, arguments...), name);
    }

    template <typename T>
    T checked(T result, const char* what) {
        expect_no_exception(what);
        return result;
    }

    jclass find_class(const char* name);
    void copy_pixels(jobject bitmap, const char* method, unsigned char* pixels, size_t bytes);
    jmethodID method(jobject object, const char* name, const char* signature);
    jfieldID field(jobject object, const char* name, const char* signature);
    void expect_no_exception(const char* what);
};

#endif  // KORVANE_TESTS_SUPPORT_JVM_H_
