// SPDX-License-Identifier: Apache-2.0
// Calls of a panorama sweep and of a burst in any order, with any frames, sizes and angles, each with its worker
// thread, beside a model of the answers and of the merged picture.
#include <cmath>

#include "applications/pano/panorama_interface.h"
#include "applications/super_capture/super_capture.h"
#include "applications/super_capture/super_capture_module.h"
#include "tests/applications/pano/panorama_module_peer.h"
#include "tests/fuzz/fuzz.h"

namespace {

int64_t degrees(float difference) {
    return std::isnan(difference) ? 0 : static_cast<int>(std::clamp<double>(difference, INT32_MIN, INT32_MAX));
}

struct Sweep {
    bool isRunning;
    float angleX, angleY;
    int direction;

    // The answer; the offsets are those before where none is written.
    int push(const Bytes* frame, float x, float y, int (&offsets)[2]) {
        if (!isRunning || frame == nullptr) {
            return isRunning ? 3 : 4;
        }
        if (angleX == 0 || angleY == 0) {
            angleX = x;
            angleY = y;
            return 3;
        }
        const int64_t dx = degrees(angleX - x), dy = degrees(angleY - y);
        offsets[0] = static_cast<int>(dy * 35);
        offsets[1] = static_cast<int>(dx * 15);
        const bool isVertical = std::abs(dy) + 2 < std::abs(dx);
        const int now = isVertical ? (dx < 0 ? 4 : 3) : (dy < 0 ? 2 : 1);
        direction = direction == 0 ? now : direction;
        return direction != now ? 2 : 0;
    }
};

void sweep(Input& input) {
    PanoramaInterface panorama;
    Sweep model = {};
    while (input.remaining_bytes() > 0) {
        const int kind = input.between(0, 15);
        if (kind == 0 || !model.isRunning) {
            const int width = input.hostile(24), height = input.hostile(24), format = input.between(0, 4);
            const bool isGood = width > 0 && height > 0 && format >= 1 && format <= 3;
            model = isGood ? Sweep{true, model.angleX, model.angleY, 0} : model;
            REQUIRE(panorama.startup(width, height, format, nullptr) == (isGood ? 0 : 3));
            // A large frame only takes time.
            if (isGood && int64_t{width} * height > 10'000) {
                return;
            }
        }
        Bytes frame = input.bytes(panorama.bytesToRead());
        const bool isNull = kind == 1;
        int given[2] = {7, 7}, expected[2] = {7, 7};
        const float x = input.number(64), y = input.number(64);
        const auto push = [&] {
            const int answer = model.push(isNull ? nullptr : &frame, x, y, expected);
            REQUIRE(panorama.addFrame(isNull ? nullptr : frame.data(), x, y, given[0], given[1]) == answer);
            REQUIRE(given[0] == expected[0] && given[1] == expected[1]);
            REQUIRE(panorama.getDirectionType() == model.direction && panorama.getResult(frame.data()) == 0);
        };
        if (kind > 3 || isNull) {
            push();
            continue;
        }
        // Ends for certain only with a frame in the queue.
        Sweep ahead = model;
        if (ahead.push(&frame, x, y, expected) == 0) {
            PanoramaModulePeer::closeWithAFrameQueued(PanoramaModulePeer::moduleOf(panorama), push,
                                                      [&] { REQUIRE(panorama.close() == 0); });
            model.isRunning = false;
        }
    }
}

// One frame at a time is in the worker's hands, so all are merged.
void burst(Input& input) {
    const uint32_t width = input.between(0U, 24U), height = input.between(0U, 8U), format = input.one_in(9) ? 2 : 1;
    const intptr_t handle = super_capture_module_init(width, height, format);
    REQUIRE((handle != 0) == (width > 0 && height > 0 && format == 1));
    const size_t count = size_t{width} * height * 2;
    std::vector<int> sums(count);
    size_t frames = 0;
    bool isDark = false, isEnded = handle == 0;
    unsigned char* none[4] = {};
    for (int pushes = input.between(0, 6); pushes > 0; --pushes) {
        Bytes frame = input.bytes(count);
        const bool isSideways = input.one_in(8);
        unsigned char* planes[4] = {isSideways ? nullptr : frame.data(), frame.data(), nullptr, nullptr};
        REQUIRE(super_capture_module_push_frame(handle, none) == -1);
        REQUIRE(super_capture_module_push_frame(handle, planes) == (handle == 0 ? -1 : isSideways ? -3 : 0));
        if (isEnded || isSideways) {
            continue;
        }
        REQUIRE(reinterpret_cast<SuperCapture*>(handle)->waitUntilTaken(++frames));
        size_t luma = 0;
        for (size_t i = 0; i < count; i += 2) {
            luma += frame[i];
        }
        isDark = frames == 1 ? luma / (count / 2) <= 24 : isDark;
        for (size_t i = 0; i < count; ++i) {
            sums[i] = isDark ? std::max<int>(sums[i], frame[i]) : sums[i] + frame[i];
        }
        isEnded = input.one_in(8);
        REQUIRE(!isEnded || super_capture_module_pop_frame(handle, planes) == 0);
    }
    for (int pops = input.between(0, 2); pops > 0; --pops) {
        Bytes merged = Input::buffer(count, 0xA5);
        unsigned char* planes[4] = {merged.data(), nullptr, nullptr, nullptr};
        REQUIRE(super_capture_module_pop_frame(handle, none) == -1);
        REQUIRE(super_capture_module_pop_frame(handle, planes) == (handle == 0 ? -1 : 0));
        for (size_t i = 0; i < count; ++i) {
            const int mean = isDark || frames == 0 ? sums[i] : sums[i] / static_cast<int>(frames);
            REQUIRE(merged[i] == (handle == 0 || frames == 0 ? 0xA5 : mean));
        }
    }
    super_capture_module_destroy(handle);
}

}  // namespace

void fuzz(Input& input) {
    input.ConsumeBool() ? sweep(input) : burst(input);
}
