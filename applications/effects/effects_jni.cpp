// SPDX-License-Identifier: Apache-2.0
// The native methods of korvane.effects that serve Blur, Palette, TimestampStamp, Panorama and Burst. Java has checked
// the arguments; a handle is alive and in use by one thread at a time.
#include <jni.h>

#include <cstring>
#include <memory>
#include <vector>

#include "algorithms/alpha_blend.h"
#include "algorithms/stack_blur.h"
#include "applications/effects/effects_call.h"
#include "applications/gif_maker/color_quantizer.h"
#include "applications/pano/panorama_interface.h"
#include "applications/photo_timestamp/timestamp_watermark.h"
#include "applications/super_capture/super_capture.h"
#include "frameworks/jni/array_elements.h"
#include "frameworks/jni/utf_chars.h"

#define EFFECTS(method) JNICALL Java_korvane_effects_Natives_##method

using korvane::answer;
using korvane::ArrayElements;
using korvane::EffectsBitmap;
using korvane::EffectsError;
using korvane::UtfChars;

namespace {

constexpr uint32_t kOpaque = 0xFF000000U;
constexpr int kPlanes = 4;

PanoramaInterface* to_panorama(jlong handle) {
    return reinterpret_cast<PanoramaInterface*>(handle);
}

SuperCapture* to_burst(jlong handle) {
    return reinterpret_cast<SuperCapture*>(handle);
}

// The bytes of an array, all of them or none.
unsigned char* bytes_of(const ArrayElements<jbyteArray>& elements) {
    if (elements.get() == nullptr) {
        throw EffectsError("memory is short");
    }
    return reinterpret_cast<unsigned char*>(elements.get());
}

std::vector<jint> palette_of(const unsigned char* pixels, int width, int height, int count) {
    ColorQuantizer quantizer;
    quantizer.prepare(width, height);
    const size_t bytes = static_cast<size_t>(width) * static_cast<size_t>(height) * 4;
    for (size_t i = 0; i < bytes; i += 4) {
        quantizer.addColor(pixels[i], pixels[i + 1], pixels[i + 2]);
    }
    std::vector<jint> colors;
    for (const Color& color : quantizer.getPalette(count)) {
        const auto rgb = static_cast<uint32_t>(color.red << 16 | color.green << 8 | color.blue);
        colors.push_back(static_cast<jint>(kOpaque | rgb));
    }
    if (colors.empty()) {
        throw EffectsError("memory is short");
    }
    return colors;
}

}  // namespace

extern "C" {

JNIEXPORT void EFFECTS(blur)(JNIEnv* env, jclass /*type*/, jobject bitmap, jint width, jint height, jint radius,
                             jint color, jint weight) {
    answer(env, [=] {
        const EffectsBitmap pixels(env, bitmap, width, height);
        stack_blur(pixels.pixels(), width, height, radius);
        // Not the blend of the older entry, which leaves the last few pixels bright and makes weight 0 black.
        alpha_blend(pixels.pixels(), width * height, color >> 16 & 255, color >> 8 & 255, color & 255, weight);
    });
}

JNIEXPORT jintArray EFFECTS(palette)(JNIEnv* env, jclass /*type*/, jobject bitmap, jint width, jint height,
                                     jint count) {
    return answer(env, [=] {
        // Unlocked before Java is called again, since no bitmap may be touched while an exception is pending.
        const std::vector<jint> colors =
            palette_of(EffectsBitmap(env, bitmap, width, height).pixels(), width, height, count);
        const auto length = static_cast<jsize>(colors.size());
        const jintArray array = env->NewIntArray(length);
        if (array != nullptr) {
            env->SetIntArrayRegion(array, 0, length, colors.data());
        }
        return array;
    });
}

JNIEXPORT jboolean EFFECTS(stamp)(JNIEnv* env, jclass /*type*/, jbyteArray yuyv, jint width, jint height,
                                  jstring text) {
    return answer(env, [=] {
        const UtfChars chars(env, text);
        const ArrayElements<jbyteArray> elements(env, yuyv);
        unsigned char* frame = bytes_of(elements);
        // A stamp that does not fit counts as done, so only the frame itself tells.
        const std::vector<unsigned char> before(frame, frame + elements.bytes());
        if (!make_photo_timestamp_watermark_to_yuyv(frame, width, height, chars.get(), 0)) {
            throw EffectsError("memory is short");
        }
        return static_cast<jboolean>(std::memcmp(before.data(), frame, before.size()) != 0);
    });
}

JNIEXPORT jlong EFFECTS(panoramaOpen)(JNIEnv* env, jclass /*type*/, jint width, jint height, jint format) {
    return answer(env, [=] {
        auto panorama = std::make_unique<PanoramaInterface>();
        if (panorama->startup(width, height, format, nullptr) != PANORAMA_RESULT_TYPE_NO_ERROR) {
            throw EffectsError("the sweep cannot begin");
        }
        return reinterpret_cast<jlong>(panorama.release());
    });
}

JNIEXPORT jint EFFECTS(panoramaFeed)(JNIEnv* env, jclass /*type*/, jlong panorama, jbyteArray frame, jfloat gyroX,
                                     jfloat gyroY, jintArray result) {
    return answer(env, [=] {
        const ArrayElements<jbyteArray> elements(env, frame);
        int offsetX = 0;
        int offsetY = 0;
        const jint code = to_panorama(panorama)->addFrame(bytes_of(elements), gyroX, gyroY, offsetX, offsetY);
        const jint values[] = {offsetX, offsetY, to_panorama(panorama)->getDirectionType()};
        env->SetIntArrayRegion(result, 0, 3, values);
        return code;
    });
}

// Without close(), which would wait for a frame that does not come; the destructor ends the worker.
JNIEXPORT void EFFECTS(panoramaClose)(JNIEnv* /*env*/, jclass /*type*/, jlong panorama) {
    delete to_panorama(panorama);
}

JNIEXPORT jlong EFFECTS(burstOpen)(JNIEnv* env, jclass /*type*/, jint width, jint height) {
    return answer(env, [=] {
        auto burst = std::make_unique<SuperCapture>();
        if (burst->init(static_cast<uint32_t>(width), static_cast<uint32_t>(height), FRAME_FORMAT_TYPE_YUYV) != 0) {
            throw EffectsError("the burst cannot begin");
        }
        return reinterpret_cast<jlong>(burst.release());
    });
}

JNIEXPORT void EFFECTS(burstPush)(JNIEnv* env, jclass /*type*/, jlong burst, jbyteArray yuyv) {
    answer(env, [=] {
        const ArrayElements<jbyteArray> elements(env, yuyv);
        unsigned char* planes[kPlanes] = {bytes_of(elements)};
        if (to_burst(burst)->pushFrame(planes) != 0) {
            throw EffectsError("memory is short");
        }
    });
}

JNIEXPORT jboolean EFFECTS(burstMerge)(JNIEnv* env, jclass /*type*/, jlong burst, jint frames, jbyteArray yuyv) {
    return answer(env, [=] {
        to_burst(burst)->waitUntilTaken(static_cast<size_t>(frames));
        const ArrayElements<jbyteArray> elements(env, yuyv);
        unsigned char* planes[kPlanes] = {bytes_of(elements)};
        to_burst(burst)->popFrame(planes);
        return static_cast<jboolean>(to_burst(burst)->summary().framesMerged > 0);
    });
}

JNIEXPORT void EFFECTS(burstClose)(JNIEnv* /*env*/, jclass /*type*/, jlong burst) {
    delete to_burst(burst);
}

}  // extern "C"
