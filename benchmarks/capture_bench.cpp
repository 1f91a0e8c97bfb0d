// SPDX-License-Identifier: Apache-2.0
// Burst merging, light metering and panorama intake: loops that read a frame once, and so run at the speed of memory.
#include <libyuv.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "applications/pano/frame_convert.h"
#include "applications/pano/frame_convert_scalar.h"
#include "applications/super_capture/merge_kernels.h"
#include "applications/super_capture/merge_kernels_scalar.h"
#include "benchmarks/support/comparison.h"
#include "benchmarks/support/huge_pages.h"
#include "benchmarks/support/picture.h"
#include "benchmarks/support/plain_loop.h"

namespace {

using namespace korvane::bench;

constexpr int kFrames = 8;

size_t pixels_of(int width, int height) {
    return static_cast<size_t>(width) * static_cast<size_t>(height);
}

// What one contestant works on: the bytes of a YUYV frame and an accumulator for each. Nobody shares with the one who
// ran just before, or would find half the work in the cache.
struct Burst {
    Burst(int width, int height) : sums(pixels_of(width, height) * 2) {
        const std::vector<uint8_t> picture = rgba_picture(width, height);
        bytes.assign(picture.begin(), picture.begin() + static_cast<std::ptrdiff_t>(sums.size()));
        for (size_t i = 0; i < sums.size(); ++i) {
            sums[i] = bytes[i] * kFrames / 2;
        }
    }

    HugeVector<uint8_t> bytes;
    HugeVector<int> sums;
};

struct Bursts {
    Bursts(int width, int height) : ours(width, height), twin(ours), plain(ours), peer(ours) {}
    Burst ours;
    Burst twin;
    Burst plain;
    Burst peer;
};

using Fold = void (*)(const uint8_t*, int*, size_t);

void fold(Fold fold, Burst& burst) {
    fold(burst.bytes.data(), burst.sums.data(), burst.sums.size());
}

void compare_add(Comparison& comparison, int width, int height) {
    auto b = std::make_shared<Bursts>(width, height);
    auto floats = std::make_shared<HugeVector<float>>(b->peer.sums.size());
    comparison.verify("equals the scalar twin", [b] {
        fold(korvane::merge_add, b->ours);
        fold(korvane::merge_add_scalar, b->twin);
        return b->ours.sums == b->twin.sums;
    });
    comparison.kernel([b] { fold(korvane::merge_add, b->ours); });
    comparison.against("plain loop", {faster(2.0)}, [b] {
        plain_loop(b->plain.sums.size(),
                   [frame = b->plain.bytes.data(), sums = b->plain.sums.data()](size_t i) { sums[i] += frame[i]; });
    });
    comparison.against("scalar twin", {}, [b] { fold(korvane::merge_add_scalar, b->twin); });
    comparison.against("cv::accumulate", {faster(0.9)}, [b, floats, width, height] {
        cv::accumulate(cv::Mat(height, width * 2, CV_8UC1, b->peer.bytes.data()),
                       cv::Mat(height, width * 2, CV_32FC1, floats->data()));
    });
    comparison.against_memcpy({}, pixels_of(width, height) * 4);
}

void compare_max(Comparison& comparison, int width, int height) {
    auto b = std::make_shared<Bursts>(width, height);
    comparison.verify("equals the scalar twin", [b] {
        fold(korvane::merge_max, b->ours);
        fold(korvane::merge_max_scalar, b->twin);
        return b->ours.sums == b->twin.sums;
    });
    comparison.kernel([b] { fold(korvane::merge_max, b->ours); });
    comparison.against("plain loop", {faster(2.7)}, [b] {
        plain_loop(b->plain.sums.size(), [frame = b->plain.bytes.data(), sums = b->plain.sums.data()](size_t i) {
            sums[i] = std::max<int>(sums[i], frame[i]);
        });
    });
    comparison.against("scalar twin", {}, [b] { fold(korvane::merge_max_scalar, b->twin); });
    comparison.against_memcpy({at_most(1.8)}, pixels_of(width, height) * 4);
}

void compare_mean(Comparison& comparison, int width, int height) {
    auto b = std::make_shared<Bursts>(width, height);
    auto floats = std::make_shared<HugeVector<float>>(b->peer.sums.begin(), b->peer.sums.end());
    const auto ours = [b] {
        korvane::merged_mean(b->ours.sums.data(), b->ours.bytes.data(), b->ours.bytes.size(), kFrames);
    };
    const auto twin = [b] {
        korvane::merged_mean_scalar(b->twin.sums.data(), b->twin.bytes.data(), b->twin.bytes.size(), kFrames);
    };
    comparison.verify("equals the scalar twin", [=] {
        ours();
        twin();
        return b->ours.bytes == b->twin.bytes;
    });
    comparison.kernel(ours);
    comparison.against("scalar twin", {faster(4.0)}, twin);
    comparison.against("cv::Mat::convertTo", {faster(1.05, 1.0)}, [b, floats, width, height] {
        cv::Mat target(height, width * 2, CV_8UC1, b->peer.bytes.data());
        cv::Mat(height, width * 2, CV_32FC1, floats->data()).convertTo(target, CV_8U, 1.0 / kFrames);
    });
    comparison.against_memcpy({}, pixels_of(width, height) * 4);
}

void compare_low_bytes(Comparison& comparison, int width, int height) {
    auto b = std::make_shared<Bursts>(width, height);
    const auto ours = [b] {
        korvane::merged_low_bytes(b->ours.sums.data(), b->ours.bytes.data(), b->ours.bytes.size());
    };
    const auto twin = [b] {
        korvane::merged_low_bytes_scalar(b->twin.sums.data(), b->twin.bytes.data(), b->twin.bytes.size());
    };
    comparison.verify("equals the scalar twin", [=] {
        ours();
        twin();
        return b->ours.bytes == b->twin.bytes;
    });
    comparison.kernel(ours);
    comparison.against("scalar twin", {}, twin);
    comparison.against_memcpy({}, pixels_of(width, height) * 4);
}

// Keeps sums from being optimised away.
volatile uint32_t gSink;

void compare_luma_plane(Comparison& comparison, int width, int height) {
    auto plane = std::make_shared<std::vector<uint8_t>>(rgba_picture(width, height));
    plane->resize(pixels_of(width, height));
    comparison.verify("equals the scalar twin", [plane] {
        return korvane::luma_sum(plane->data(), plane->size()) ==
               korvane::luma_sum_scalar(plane->data(), plane->size());
    });
    comparison.kernel([plane] { gSink = korvane::luma_sum(plane->data(), plane->size()); });
    comparison.against("scalar twin", {}, [plane] { gSink = korvane::luma_sum_scalar(plane->data(), plane->size()); });
    comparison.against("cv::mean", {faster(0.9)}, [plane, width, height] {
        gSink = static_cast<uint32_t>(cv::mean(cv::Mat(height, width, CV_8UC1, plane->data()))[0]);
    });
}

void compare_luma_yuyv(Comparison& comparison, int width, int height) {
    auto frame = std::make_shared<std::vector<uint8_t>>(rgba_picture(width, height));
    const size_t pixels = pixels_of(width, height);
    comparison.verify("equals the scalar twin", [frame, pixels] {
        return korvane::luma_sum_yuyv(frame->data(), pixels) == korvane::luma_sum_yuyv_scalar(frame->data(), pixels);
    });
    comparison.kernel([frame, pixels] { gSink = korvane::luma_sum_yuyv(frame->data(), pixels); });
    comparison.against("scalar twin", {},
                       [frame, pixels] { gSink = korvane::luma_sum_yuyv_scalar(frame->data(), pixels); });
    comparison.against("cv::mean of both channels", {faster(0.9)}, [frame, width, height] {
        gSink = static_cast<uint32_t>(cv::mean(cv::Mat(height, width, CV_8UC2, frame->data()))[0]);
    });
}

void compare_nv12(Comparison& comparison, int width, int height) {
    const size_t luma = pixels_of(width, height);
    const std::vector<uint8_t> picture = rgba_picture(width, height);
    auto source = std::make_shared<HugeVector<uint8_t>>(picture.begin(), picture.end());
    auto ours = std::make_shared<HugeVector<uint8_t>>(luma * 3 / 2);
    auto twins = std::make_shared<HugeVector<uint8_t>>(luma * 3 / 2);
    auto theirs = std::make_shared<HugeVector<uint8_t>>(luma * 3 / 2);
    const auto twin = [=] {
        std::memcpy(twins->data(), source->data(), luma);
        korvane::split_pairs_scalar(source->data() + luma, twins->data() + luma * 5 / 4, twins->data() + luma,
                                    luma / 4);
    };
    const auto peer = [=] {
        libyuv::NV12ToI420(source->data(), width, source->data() + luma, width, theirs->data(), width,
                           theirs->data() + luma * 5 / 4, width / 2, theirs->data() + luma, width / 2, width, height);
    };
    comparison.verify("equals the scalar twin and libyuv", [=] {
        convert_nv12_to_yv12(source->data(), ours->data(), width, height);
        twin();
        peer();
        return *ours == *twins && *ours == *theirs;
    });
    comparison.kernel([=] { convert_nv12_to_yv12(source->data(), ours->data(), width, height); });
    comparison.against("memcpy and scalar twin", {faster(1.4)}, twin);
    comparison.against("libyuv NV12ToI420", {at_most(1.1)}, peer);
    comparison.against_memcpy({}, luma * 4);
}

#define KORVANE_BOTH_SIZES(constant, name, compare)                                                       \
    const Registration constant##Large(name "/4000x3000", [](Comparison& c) { compare(c, 4000, 3000); }); \
    const Registration constant##Small(name "/1920x1080", [](Comparison& c) { compare(c, 1920, 1080); })

KORVANE_BOTH_SIZES(kAdd, "merge_add", compare_add);
KORVANE_BOTH_SIZES(kMax, "merge_max", compare_max);
KORVANE_BOTH_SIZES(kMean, "merged_mean", compare_mean);
KORVANE_BOTH_SIZES(kLowBytes, "merged_low_bytes", compare_low_bytes);
KORVANE_BOTH_SIZES(kLumaPlane, "luma_sum", compare_luma_plane);
KORVANE_BOTH_SIZES(kLumaYuyv, "luma_sum_yuyv", compare_luma_yuyv);
KORVANE_BOTH_SIZES(kNv12, "nv12_to_yv12", compare_nv12);

}  // namespace
