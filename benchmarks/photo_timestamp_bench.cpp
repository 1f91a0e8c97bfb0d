// SPDX-License-Identifier: Apache-2.0
// The timestamp against a copy of the frame that it goes into: a stamp must never be what delays a photo.
#include <algorithm>
#include <memory>
#include <vector>

#include "applications/photo_timestamp/timestamp_watermark.h"
#include "benchmarks/support/comparison.h"

namespace {

using namespace korvane::bench;

constexpr char kText[] = "2026-01-02 03:04";

void compare_stamp(Comparison& comparison, int width, int height) {
    const size_t bytes = static_cast<size_t>(width) * static_cast<size_t>(height) * 2;
    auto frame = std::make_shared<std::vector<unsigned char>>(bytes, static_cast<unsigned char>(100));
    comparison.verify("something is stamped", [frame, width, height] {
        return make_photo_timestamp_watermark_to_yuyv(frame->data(), width, height, kText, 0) &&
               std::any_of(frame->begin(), frame->end(), [](unsigned char byte) { return byte != 100; });
    });
    comparison.kernel(
        [frame, width, height] { make_photo_timestamp_watermark_to_yuyv(frame->data(), width, height, kText, 0); });
    comparison.against_memcpy({at_most(1.0)}, bytes);
}

const Registration kPhoto("photo_timestamp/4000x3000", [](Comparison& c) { compare_stamp(c, 4000, 3000); });
const Registration kWide("photo_timestamp/4000x2250", [](Comparison& c) { compare_stamp(c, 4000, 2250); });

}  // namespace
