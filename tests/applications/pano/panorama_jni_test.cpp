// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "applications/pano/panorama_interface.h"
#include "tests/support/jvm.h"
#include "tests/support/standard_error.h"

namespace {

// The end of a sweep by nativeDestroy is one of the native cases.
constexpr char kClass[] = "com/tervo/media/effects/pano/PanoramaModule";

using PanoramaJniTest = JvmTest;

TEST_F(PanoramaJniTest, BadArgumentsGiveNoHandleAndTooLargeOnesNoFrame) {
    const jobject panorama = new_object(kClass, "()V");
    for (const auto& [width, height, format] :
         {std::tuple(0, 480, 1), {640, 0, 1}, {-640, -480, 1}, {640, 480, 0}, {640, 480, 4}}) {
        StandardErrorCapture standardError;
        EXPECT_EQ(call_long(panorama, "nativeCreate", "(III)J", width, height, format), 0);
        const std::string arguments = "width:" + std::to_string(width) + ", height:" + std::to_string(height) +
                                      ", format:" + std::to_string(format);
        EXPECT_THAT(
            standardError.log_lines(),
            testing::ElementsAre("Java_com_tervo_media_effects_pano_PanoramaModule_nativeCreate " + arguments,
                                 testing::StartsWith("PanoramaModule::startup " + arguments + ", onErrorCb:0x")));
    }
    EXPECT_EQ(call_int(panorama, "nativeProcess", "(J[BFF)I", jlong{0}, nullptr, 1.0, 2.0), 0);
    StandardErrorCapture standardError;
    call_void(panorama, "nativeDestroy", "(J)V", jlong{0});
    EXPECT_THAT(standardError.log_lines(),
                testing::Contains("Java_com_tervo_media_effects_pano_PanoramaModule_nativeDestroy  pano_handle:(nil)"));
}

TEST_F(PanoramaJniTest, ASweepWritesTheOffsetsOfTakenFrames) {
    StandardErrorCapture standardError;
    const jobject panorama = new_object(kClass, "()V");
    const jlong handle = call_long(panorama, "nativeCreate", "(III)J", 4, 2, 2);
    ASSERT_NE(handle, 0);
    const jbyteArray frame = env->NewByteArray(12);
    const auto process = [&](jbyteArray data, double gyroX, double gyroY) {
        return call_int(panorama, "nativeProcess", "(J[BFF)I", handle, data, gyroX, gyroY);
    };
    set_field(panorama, "mOffsetX", jint{7});
    // Neither a short frame nor none becomes the reference.
    EXPECT_EQ(process(env->NewByteArray(11), 1, 1), 3);
    EXPECT_EQ(process(nullptr, 1, 1), 3);
    EXPECT_EQ(process(frame, 10, 20), 3);
    EXPECT_EQ(int_field(panorama, "mOffsetX"), 7);
    EXPECT_EQ(process(frame, 11, 17.5), 0);
    EXPECT_EQ(int_field(panorama, "mOffsetX"), 70);
    EXPECT_EQ(int_field(panorama, "mOffsetY"), -15);
    EXPECT_EQ(process(frame, 10, 25), 2);
    EXPECT_EQ(int_field(panorama, "mOffsetX"), 70);

    delete reinterpret_cast<PanoramaInterface*>(handle);
    EXPECT_THAT(standardError.log_lines(),
                testing::Contains("Java_com_tervo_media_effects_pano_PanoramaModule_nativeProcess pano_handle:" +
                                  testing::PrintToString(reinterpret_cast<void*>(handle)) +
                                  ", data:(nil), gyroX:1.000000, gyroY:1.000000")
                    .Times(2));
}

}  // namespace
