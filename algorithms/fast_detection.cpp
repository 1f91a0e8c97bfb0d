// SPDX-License-Identifier: Apache-2.0
#include "algorithms/fast_detection.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "algorithms/fast_detection_frame.h"
#include "algorithms/fast_detection_scalar.h"
#include "frameworks/core/guard.h"
#include "frameworks/core/memory.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algorithms/fast_detection.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include <hwy/cache_control.h>

#include "frameworks/simd/bytes-inl.h"
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/steps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

struct Least {
    template <class V>
    HWY_INLINE V operator()(V a, V b) const {
        return hn::Min(a, b);
    }
};

struct Greatest {
    template <class V>
    HWY_INLINE V operator()(V a, V b) const {
        return hn::Max(a, b);
    }
};

// With Least and Greatest: the greatest value that all nine pixels of some arc reach. The arcs that begin at k and at
// k + 1 share eight pixels. So eight arcs of eight pixels are formed, in doubling steps, and each gets a ninth pixel at
// either end.
template <class Inner, class Outer, class V>
HWY_INLINE V BestArc(Inner inner, Outer outer, V p0, V p1, V p2, V p3, V p4, V p5, V p6, V p7, V p8, V p9, V p10, V p11,
                     V p12, V p13, V p14, V p15) {
    const V two1 = inner(p1, p2), two3 = inner(p3, p4), two5 = inner(p5, p6), two7 = inner(p7, p8);
    const V two9 = inner(p9, p10), two11 = inner(p11, p12), two13 = inner(p13, p14), two15 = inner(p15, p0);
    const V four1 = inner(two1, two3), four3 = inner(two3, two5), four5 = inner(two5, two7), four7 = inner(two7, two9);
    const V four9 = inner(two9, two11), four11 = inner(two11, two13), four13 = inner(two13, two15);
    const V four15 = inner(two15, two1);
    const V arc1 = inner(inner(four1, four5), outer(p0, p9)), arc3 = inner(inner(four3, four7), outer(p2, p11));
    const V arc5 = inner(inner(four5, four9), outer(p4, p13)), arc7 = inner(inner(four7, four11), outer(p6, p15));
    const V arc9 = inner(inner(four9, four13), outer(p8, p1)), arc11 = inner(inner(four11, four15), outer(p10, p3));
    const V arc13 = inner(inner(four13, four1), outer(p12, p5)), arc15 = inner(inner(four15, four3), outer(p14, p7));
    return outer(outer(outer(arc1, arc3), outer(arc5, arc7)), outer(outer(arc9, arc11), outer(arc13, arc15)));
}

// With Least and Greatest: the greatest value that one end of each of two diameters reaches. Every arc of nine pixels
// holds one end of each diameter.
template <class Inner, class Outer, class V>
HWY_INLINE V BestEnds(Inner inner, Outer outer, V a0, V a8, V b0, V b8) {
    return inner(outer(a0, a8), outer(b0, b8));
}

struct RowJob {
    const unsigned char* line;  // the row of the image
    ptrdiff_t stride;
    unsigned char threshold;
    bool isScored;
    unsigned char* row;  // out: score (or any other value but 0) of each corner; cleared before
};

// Works on the brightness of the circle's pixels; the centre is compared once with the result for a whole arc. False
// when no pixel of the block is a corner. The job comes by value: a store to a byte may change whatever is not the
// function's own.
template <class D>
HWY_INLINE bool ScoreBlock(D d, const RowJob job, size_t at) {
    const unsigned char* centre = job.line + at;
    const auto circle = [&](ptrdiff_t dx, ptrdiff_t dy)
                            KORVANE_INLINE { return hn::LoadU(d, centre + dy * job.stride + dx); };
    const auto value = hn::LoadU(d, centre);
    // The lowest row of the next row's circles. Harmless below the last row: a prefetch never faults.
    hwy::Prefetch(centre + 4 * job.stride);
    const auto threshold = hn::Set(d, job.threshold);
    const auto ceiling = hn::SaturatedAdd(value, threshold);
    const auto floor = hn::SaturatedSub(value, threshold);

    const auto p0 = circle(0, 3), p4 = circle(3, 0), p8 = circle(0, -3), p12 = circle(-3, 0);
    auto bright = hn::SaturatedSub(BestEnds(Least(), Greatest(), p0, p8, p4, p12), ceiling);
    auto dark = hn::SaturatedSub(floor, BestEnds(Greatest(), Least(), p0, p8, p4, p12));
    if (IsAllZero(d, hn::Or(bright, dark))) {
        return false;
    }
    const auto p2 = circle(2, 2), p6 = circle(2, -2), p10 = circle(-2, -2), p14 = circle(-2, 2);
    bright = hn::Min(bright, hn::SaturatedSub(BestEnds(Least(), Greatest(), p2, p10, p6, p14), ceiling));
    dark = hn::Min(dark, hn::SaturatedSub(floor, BestEnds(Greatest(), Least(), p2, p10, p6, p14)));
    const bool hasBright = !IsAllZero(d, bright);
    const bool hasDark = !IsAllZero(d, dark);
    if (!hasBright && !hasDark) {
        return false;
    }

    const auto p1 = circle(1, 3), p3 = circle(3, 1), p5 = circle(3, -1), p7 = circle(1, -3);
    const auto p9 = circle(-1, -3), p11 = circle(-3, -1), p13 = circle(-3, 1), p15 = circle(-1, 3);
    auto difference = hn::Zero(d);
    if (hasBright) {
        const auto arc =
            BestArc(Least(), Greatest(), p0, p1, p2, p3, p4, p5, p6, p7, p8, p9, p10, p11, p12, p13, p14, p15);
        difference = hn::SaturatedSub(arc, value);
    }
    if (hasDark) {
        const auto arc =
            BestArc(Greatest(), Least(), p0, p1, p2, p3, p4, p5, p6, p7, p8, p9, p10, p11, p12, p13, p14, p15);
        difference = hn::Max(difference, hn::SaturatedSub(value, arc));
    }
    const auto score = job.isScored ? hn::SaturatedSub(difference, hn::Set(d, uint8_t{1})) : difference;
    const auto corners = hn::IfThenElseZero(hn::Gt(difference, threshold), score);
    hn::StoreU(corners, d, job.row + at);
    return !IsAllZero(d, corners);
}

// Bit i tells whether the pixel in column at + i is kept.
template <class D>
HWY_INLINE uint64_t KeptInBlock(D d, const unsigned char* above, const unsigned char* own, const unsigned char* below,
                                size_t at, bool suppress) {
    const auto score = hn::LoadU(d, own + at);
    const auto greatest_of_three = [&](const unsigned char* row) KORVANE_INLINE {
        return hn::Max(hn::Max(hn::LoadU(d, row - 1), hn::LoadU(d, row + 1)), hn::LoadU(d, row));
    };
    auto neighbours = hn::Zero(d);
    if (suppress) {
        neighbours = hn::Max(hn::LoadU(d, own + at - 1), hn::LoadU(d, own + at + 1));
        neighbours = hn::Max(neighbours, hn::Max(greatest_of_three(above + at), greatest_of_three(below + at)));
    }
    uint8_t bytes[8] = {};
    hn::StoreMaskBits(d, hn::Gt(score, neighbours), bytes);
    uint64_t bits;
    std::memcpy(&bits, bytes, sizeof(bits));
    return bits;
}

struct Columns {
    size_t first;
    size_t end;
};

// Calls body(tag) with the vectors that the blocks of a row have.
template <class Body>
HWY_INLINE void WithBlockTag(const Columns& columns, const Body& body) {
    WithLongestVector<uint8_t, 64, 16>(columns.end - columns.first, body);
}

// Lists where the blocks with corners begin, and returns how many they are. Some columns may come twice.
HWY_NOINLINE size_t ScoreRow(const RowJob& job, const Columns& columns, uint32_t* blocks) {
    size_t count = 0;
    WithBlockTag(columns, [&](auto d) KORVANE_INLINE {
        size_t found = 0;
        ForOverlappingSteps(columns.first, columns.end, hn::Lanes(d), [&, job](size_t at) KORVANE_INLINE {
            if (ScoreBlock(d, job, at)) {
                blocks[found++] = static_cast<uint32_t>(at);
            }
        });
        count = found;
    });
    return count;
}

struct Blocks {
    const uint32_t* first;
    size_t count;
};

HWY_NOINLINE void EmitRow(const unsigned char* above, const unsigned char* own, const unsigned char* below,
                          const Columns& columns, const Blocks& blocks, bool suppress, CornerThinner& thinner) {
    WithBlockTag(columns, [&](auto d) KORVANE_INLINE {
        for (size_t i = 0; i < blocks.count; ++i) {
            // A column that comes twice does no harm: its bin was taken the first time.
            const size_t at = blocks.first[i];
            uint64_t bits = KeptInBlock(d, above, own, below, at, suppress);
            for (; bits != 0; bits &= bits - 1) {
                thinner.add(static_cast<int>(at + hwy::Num0BitsBelowLS1Bit_Nonzero64(bits)));
            }
        }
    });
}

Columns ColumnsOf(const FastFrame& frame, int64_t row) {
    const int64_t first = frame.first_column(row);
    return {static_cast<size_t>(first), static_cast<size_t>(std::max(first, frame.end_column(row)))};
}

void DetectCorners(const unsigned char* img, std::vector<KeyPoint>& keypoints, const FastFrame& frame,
                   const FastParams& params) {
    const std::unique_ptr<unsigned char, decltype(&galloc_free)> work(
        static_cast<unsigned char*>(galloc_alloc(frame.work_bytes())), &galloc_free);
    if (work == nullptr) {
        return;
    }
    // In rotation, the blocks with corners of two rows and the scores of three, with a spare byte on each side of a row
    // that is always 0.
    const size_t columns = static_cast<size_t>(frame.width);
    const auto blocks_of = [&](int64_t i) {
        return reinterpret_cast<uint32_t*>(work.get()) + static_cast<size_t>(i % 2) * columns;
    };
    unsigned char* const rows = reinterpret_cast<unsigned char*>(blocks_of(1) + columns);
    const auto row_of = [&](int64_t i) { return rows + static_cast<size_t>(i % 3) * (columns + 2) + 1; };
    const auto threshold = static_cast<unsigned char>(frame.threshold);
    const bool suppress = params.nonmax_suppression != 0;
    CornerThinner thinner(params.min_dist, keypoints);

    size_t found = 0;
    for (int64_t i = frame.firstRow; i <= frame.endRow; ++i) {
        std::memset(row_of(i), 0, columns);
        const size_t foundBefore = found;
        if (i < frame.endRow) {
            found = ScoreRow({img + i * frame.width, static_cast<ptrdiff_t>(columns), threshold, suppress, row_of(i)},
                             ColumnsOf(frame, i), blocks_of(i));
        }
        if (i > frame.firstRow) {
            thinner.begin_row(static_cast<int>(i - 1));
            EmitRow(row_of(i - 2), row_of(i - 1), row_of(i), ColumnsOf(frame, i - 1), {blocks_of(i - 1), foundBefore},
                    suppress, thinner);
        }
    }
}

#else

constexpr auto& DetectCorners = fast16_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(DetectCorners);

}  // namespace
}  // namespace korvane

void fast16(const unsigned char* img, std::vector<KeyPoint>& keypoints, int width, int height,
            const FastParams* params) {
    keypoints.clear();
    if (img == nullptr || params == nullptr) {
        return;
    }
    const korvane::FastFrame frame(width, height, *params);
    if (frame.is_empty()) {
        return;
    }
    const bool is_done = korvane::guarded(false, [&] {
        korvane::DetectCorners(img, keypoints, frame, *params);
        return true;
    });
    if (!is_done) {
        keypoints.clear();
    }
}

#endif
