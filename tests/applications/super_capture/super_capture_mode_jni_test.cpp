// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "tests/support/jvm.h"
#include "tests/support/log_capture.h"
#include "tests/support/native_methods.h"
#include "tests/support/standard_error.h"

namespace {

class SuperCaptureModeTest : public JvmTest {
  protected:
    jbyteArray bytes(int count, int value) {
        const jbyteArray array = env->NewByteArray(count);
        const std::vector<jbyte> values(static_cast<size_t>(count), static_cast<jbyte>(value));
        env->SetByteArrayRegion(array, 0, count, values.data());
        return array;
    }
    float float_field(jobject object, const char* name) {
        return env->GetFloatField(object, env->GetFieldID(env->GetObjectClass(object), name, "F"));
    }
};

TEST_F(SuperCaptureModeTest, AdvisesTheJavaObject) {
    StandardErrorCapture standardError;
    const jobject mode = new_object("RecordingMode", "()V");
    const jlong handle = call_long(mode, "nativeCreate", "(III)J", 4, 2, 17);
    ASSERT_NE(handle, 0);
    EXPECT_THAT(standardError.log_lines(),
                testing::ElementsAre("Java_com_tervo_media_supercapture_mode_SuperCaptureMode_nativeCreate  width:4, "
                                     "height:2, format:17",
                                     "m_Width:4, m_Height:2"));
    const auto expect_after = [&](jlong to, jbyteArray data, int reports, float aperture, int gain) {
        call_void(mode, "nativeProcess", "(J[B)V", to, data);
        EXPECT_EQ(int_field(mode, "reports"), reports);
        EXPECT_EQ(float_field(mode, "aperture"), aperture);
        EXPECT_EQ(int_field(mode, "gain"), gain);
    };
    expect_after(handle, nullptr, 0, 0, 0);
    expect_after(handle, bytes(7, 200), 0, 0, 0);
    expect_after(0, bytes(12, 200), 0, 0, 0);
    expect_after(handle, bytes(12, 35), 1, 2.8F, 2);
    expect_after(handle, bytes(8, 255), 2, 22.0F, -2);

    set_field(mode, "throwFromCallback", true);
    const jmethodID method = env->GetMethodID(env->GetObjectClass(mode), "nativeProcess", "(J[B)V");
    env->CallVoidMethod(mode, method, handle, bytes(8, 0));
    ASSERT_TRUE(env->ExceptionCheck()) << "the callback's exception belongs to the caller";
    env->ExceptionClear();
    EXPECT_EQ(int_field(mode, "reports"), 3);
    call_void(mode, "nativeDestroy", "(J)V", handle);
    call_void(mode, "nativeDestroy", "(J)V", jlong{0});
}

TEST_F(SuperCaptureModeTest, AnObjectWithoutTheCallbackIsLoggedAndLeftInPeace) {
    // This program's own copy of the methods takes an object that is no SuperCaptureMode.
    LogCapture log;
    const jobject other = string("no callback here");
    const jlong handle = MODE(nativeCreate)(env, other, 4, 2, 0);
    log.clear();
    MODE(nativeProcess)(env, other, handle, bytes(8, 90));
    EXPECT_FALSE(env->ExceptionCheck());
    // The report counts as made: the same light is not tried again.
    MODE(nativeProcess)(env, other, handle, bytes(8, 90));
    EXPECT_THAT(log.lines(), testing::ElementsAre("method onResultCallback is not found!"));
    MODE(nativeDestroy)(env, other, handle);
}

}  // namespace
