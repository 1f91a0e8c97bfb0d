// SPDX-License-Identifier: Apache-2.0
#include "tests/support/jvm.h"

#include <cstdio>
#include <cstdlib>

namespace {

JavaVM* start_machine() {
    std::vector<JavaVMOption> options;
    for (const char* text : {"-Djava.class.path=" KORVANE_CLASS_PATH, "-Djava.library.path=" KORVANE_LIBRARY_DIR,
                             "-Xcheck:jni", "-Djava.awt.headless=true", "-Xmx512m"}) {
        options.push_back({const_cast<char*>(text), nullptr});
    }
    JavaVMInitArgs arguments{};
    arguments.version = JNI_VERSION_1_6;
    arguments.options = options.data();
    arguments.nOptions = static_cast<jint>(options.size());
    JavaVM* machine = nullptr;
    JNIEnv* env = nullptr;
    if (JNI_CreateJavaVM(&machine, reinterpret_cast<void**>(&env), &arguments) != JNI_OK) {
        std::fprintf(stderr, "no Java virtual machine\n");
        std::abort();
    }
    return machine;
}

}  // namespace

JNIEnv* jvm_env() {
    static JavaVM* const kMachine = start_machine();
    JNIEnv* env = nullptr;
    if (kMachine->AttachCurrentThread(reinterpret_cast<void**>(&env), nullptr) != JNI_OK) {
        std::abort();
    }
    return env;
}

void JvmTest::SetUp() {
    env = jvm_env();
    ASSERT_EQ(env->PushLocalFrame(256), 0);
}

void JvmTest::TearDown() {
    expect_no_exception("the test");
    env->PopLocalFrame(nullptr);
}

void JvmTest::expect_no_exception(const char* what) {
    if (env->ExceptionCheck()) {
        env->ExceptionDescribe();
        env->ExceptionClear();
        ADD_FAILURE() << "Java exception from " << what;
    }
}

jmethodID JvmTest::method(jobject object, const char* name, const char* signature) {
    return checked(env->GetMethodID(env->GetObjectClass(object), name, signature), name);
}

jfieldID JvmTest::field(jobject object, const char* name, const char* signature) {
    return checked(env->GetFieldID(env->GetObjectClass(object), name, signature), name);
}

jclass JvmTest::find_class(const char* name) {
    return checked(env->FindClass(name), name);
}

jstring JvmTest::string(const char* text) {
    return checked(text == nullptr ? nullptr : env->NewStringUTF(text), "NewStringUTF");
}

jobject JvmTest::new_bitmap(int width, int height, const std::vector<unsigned char>& pixels) {
    const jobject bitmap =
        call_static_object("android/graphics/Bitmap", "createBitmap", "(II)Landroid/graphics/Bitmap;", width, height);
    if (bitmap != nullptr) {
        copy_pixels(bitmap, "copyPixelsFromBuffer", const_cast<unsigned char*>(pixels.data()), pixels.size());
    }
    return bitmap;
}

std::vector<unsigned char> JvmTest::bitmap_pixels(jobject bitmap) {
    std::vector<unsigned char> pixels(static_cast<size_t>(call_int(bitmap, "getRowBytes", "()I")) *
                                      static_cast<size_t>(call_int(bitmap, "getHeight", "()I")));
    copy_pixels(bitmap, "copyPixelsToBuffer", pixels.data(), pixels.size());
    return pixels;
}

void JvmTest::copy_pixels(jobject bitmap, const char* method, unsigned char* pixels, size_t bytes) {
    const jobject buffer = env->NewDirectByteBuffer(pixels, static_cast<jlong>(bytes));
    expect_no_exception("NewDirectByteBuffer");
    call_void(bitmap, method, "(Ljava/nio/Buffer;)V", buffer);
    env->DeleteLocalRef(buffer);
}

std::string JvmTest::junit_failures(const char* className) {
    const auto failures = static_cast<jstring>(
        call_static_object("EffectsSupport", "run", "(Ljava/lang/String;)Ljava/lang/String;", string(className)));
    if (failures == nullptr) {
        return "the tests could not be run";
    }
    const char* chars = env->GetStringUTFChars(failures, nullptr);
    const std::string text = chars;
    env->ReleaseStringUTFChars(failures, chars);
    return text;
}
