// SPDX-License-Identifier: Apache-2.0
// The JUnit tests that draw, and their native methods.
#include <jni.h>

#include <memory>
#include <vector>

#include "tests/support/gl_surface.h"
#include "tests/support/jvm.h"

namespace {

std::unique_ptr<GlSurface> gSurface;

void open_surface(JNIEnv* /*env*/, jclass /*type*/, jint width, jint height) {
    gSurface = std::make_unique<GlSurface>(width, height);
}

void close_surface(JNIEnv* /*env*/, jclass /*type*/) {
    gSurface.reset();
}

jlong current_context(JNIEnv* /*env*/, jclass /*type*/) {
    return reinterpret_cast<jlong>(eglGetCurrentContext());
}

// The image and the picture go with the context.
void show(JNIEnv* env, jclass /*type*/, jint texture, jint width, jint height, jbyteArray rgba) {
    std::vector<unsigned char> bytes(static_cast<size_t>(env->GetArrayLength(rgba)));
    env->GetByteArrayRegion(rgba, 0, static_cast<jsize>(bytes.size()), reinterpret_cast<jbyte*>(bytes.data()));
    show_through(static_cast<GLuint>(texture), new_texture(width, height, bytes.data()));
}

jbyteArray surface_pixels(JNIEnv* env, jclass /*type*/, jint width, jint height) {
    const auto rowBytes = static_cast<jsize>(width * 4);
    std::vector<jbyte> row(static_cast<size_t>(rowBytes));
    const jbyteArray array = env->NewByteArray(rowBytes * height);
    for (jint y = 0; y < height && array != nullptr; ++y) {
        glReadPixels(0, height - 1 - y, width, 1, GL_RGBA, GL_UNSIGNED_BYTE, row.data());
        env->SetByteArrayRegion(array, y * rowBytes, rowBytes, row.data());
    }
    return array;
}

template <typename Function>
JNINativeMethod native(const char* name, const char* signature, Function* function) {
    return {const_cast<char*>(name), const_cast<char*>(signature), reinterpret_cast<void*>(function)};
}

class EffectsGpu : public JvmTest {};

TEST_F(EffectsGpu, JUnitTestsPass) {
    const jclass type = env->FindClass("FilterTest");
    ASSERT_NE(type, nullptr);
    const JNINativeMethod methods[] = {
        native("openSurface", "(II)V", open_surface), native("closeSurface", "()V", close_surface),
        native("currentContext", "()J", current_context), native("show", "(III[B)V", show),
        native("surfacePixels", "(II)[B", surface_pixels)};
    ASSERT_EQ(env->RegisterNatives(type, methods, std::size(methods)), 0);
    EXPECT_EQ(junit_failures("FilterTest"), "");
}

}  // namespace
