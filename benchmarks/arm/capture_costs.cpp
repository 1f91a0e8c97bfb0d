// SPDX-License-Identifier: Apache-2.0
// Burst merging, light metering, panorama intake and the timestamp, per pixel of a YUYV frame where that is what they
// read.
#include <cstring>

#include "applications/pano/frame_convert.h"
#include "applications/pano/frame_convert_scalar.h"
#include "applications/photo_timestamp/timestamp_watermark.h"
#include "applications/super_capture/merge_kernels.h"
#include "applications/super_capture/merge_kernels_scalar.h"
#include "benchmarks/arm/cost.h"

namespace korvane::arm {
namespace {

constexpr size_t kPixels = Scene::kPixels;
constexpr size_t kFrameBytes = 2 * kPixels;
constexpr int kFrames = 8;

// As after half of the frames.
void fill_sums(Scene& s) {
    for (size_t i = 0; i < kFrameBytes; ++i) {
        s.sums[i] = s.yuyv[kFrameBytes - 1 - i] * kFrames / 2;
    }
}

// What the maximum keeps is a byte each.
void fill_maxima(Scene& s) {
    for (size_t i = 0; i < kFrameBytes; ++i) {
        s.sums[i] = s.yuyv[kFrameBytes - 1 - i];
    }
}

std::vector<uint8_t> sums_of(const Scene& s) {
    const auto* first = reinterpret_cast<const uint8_t*>(s.sums.data());
    return {first, first + s.sums.size() * sizeof(int)};
}

using Fold = void (*)(const uint8_t*, int*, size_t);

Cost fold_cost(const char* name, Fold ours, Fold twin, Work prepare) {
    const auto folded = [](Fold fold) { return [=](Scene& s) { fold(s.yuyv.data(), s.sums.data(), kFrameBytes); }; };
    return {name, folded(ours), folded(twin), std::move(prepare), sums_of};
}

Cost luma_cost(const char* name, uint32_t (*ours)(const uint8_t*, size_t), uint32_t (*twin)(const uint8_t*, size_t),
               std::vector<uint8_t> Scene::*frame) {
    const auto summed = [frame](auto sum) {
        return [=](Scene& s) { s.sums[0] = static_cast<int>(sum((s.*frame).data(), kPixels)); };
    };
    return {name, summed(ours), summed(twin), {}, sums_of};
}

Cost intake_cost() {
    return {"nv12_to_yv12",
            [](Scene& s) { convert_nv12_to_yv12(s.y(), s.out.data(), Scene::kWidth, Scene::kHeight); },
            [](Scene& s) {
                std::memcpy(s.out.data(), s.y(), kPixels);
                split_pairs_scalar(s.chroma(), s.out.data() + kPixels * 5 / 4, s.outChroma(), kPixels / 4);
            },
            {},
            {}};
}

Cost timestamp_cost() {
    return {"timestamp in a YUYV frame",
            [](Scene& s) {
                make_photo_timestamp_watermark_to_yuyv(s.out.data(), Scene::kWidth, Scene::kHeight, "2026-01-02 03:04",
                                                       0);
            },
            {},
            [](Scene& s) { std::memcpy(s.out.data(), s.yuyv.data(), s.yuyv.size()); },
            {}};
}

}  // namespace

std::vector<Cost> capture_costs() {
    return {
        intake_cost(),
        fold_cost("merge_add", merge_add, merge_add_scalar, fill_sums),
        fold_cost("merge_max", merge_max, merge_max_scalar, fill_maxima),
        fold_cost("merge_first", merge_first, merge_first_scalar, {}),
        {"merged_mean",
         [](Scene& s) { merged_mean(s.sums.data(), s.out.data(), kFrameBytes, kFrames); },
         [](Scene& s) { merged_mean_scalar(s.sums.data(), s.out.data(), kFrameBytes, kFrames); },
         fill_sums,
         {}},
        {"merged_low_bytes",
         [](Scene& s) { merged_low_bytes(s.sums.data(), s.out.data(), kFrameBytes); },
         [](Scene& s) { merged_low_bytes_scalar(s.sums.data(), s.out.data(), kFrameBytes); },
         fill_sums,
         {}},
        luma_cost("luma_sum", luma_sum, luma_sum_scalar, &Scene::planar),
        luma_cost("luma_sum_yuyv", luma_sum_yuyv, luma_sum_yuyv_scalar, &Scene::yuyv),
        timestamp_cost(),
    };
}

}  // namespace korvane::arm
