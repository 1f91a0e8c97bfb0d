// SPDX-License-Identifier: Apache-2.0
#include "algorithms/lbp.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "algorithms/lbp_scalar.h"
#include "algorithms/lbp_walk.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algorithms/lbp.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include "frameworks/simd/bytes-inl.h"
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/steps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

using WideTag = hn::CappedTag<unsigned int, 16>;

// A bit for each neighbour, set where it is less than the centre, and above them those of `block`.
template <class B, class V>
HWY_INLINE B Slot(B block, V left0, V left1, V left2, V above, V centre, V below, V right0, V right1, V right2) {
    V bits = FirstLess(left0, centre);
    bits = AddLess<1>(bits, left1, centre);
    bits = AddLess<2>(bits, left2, centre);
    bits = AddLess<3>(bits, above, centre);
    bits = AddLess<4>(bits, below, centre);
    bits = AddLess<5>(bits, right0, centre);
    bits = AddLess<6>(bits, right1, centre);
    bits = AddLess<7>(bits, right2, centre);
    return LowByteBelow(block, bits);
}

// Columns are too short for the processor to foresee the next ones by itself. The address may be past the image's end.
template <int kIsWritten>
HWY_INLINE void FetchAhead(const unsigned int* from, size_t distance) {
    const uintptr_t address = reinterpret_cast<uintptr_t>(from) + distance * sizeof(*from);
    __builtin_prefetch(reinterpret_cast<const void*>(address), kIsWritten);
}

// slots[i] = first + 256 * i + pattern of centre[i], for `count` pixels of each of `kColumns` columns. The columns
// stand in `slots` at a distance of `slotStride`. Counts are at least one vector. Columns done together share what they
// load.
template <size_t kColumns, class D>
HWY_INLINE void ListWholeVectors(D d, const unsigned int* centre, size_t stride, size_t count, unsigned int first,
                                 unsigned int firstStep, unsigned int* slots, size_t slotStride) {
    const auto steps = hn::ShiftLeft<8>(hn::Iota(d, 0));
    ForOverlappingSteps(0, count, hn::Lanes(d), [&](size_t at) KORVANE_INLINE {
        const unsigned int* column = centre + at - stride;
        auto left0 = LoadComparable(d, column - 1);
        auto left1 = LoadComparable(d, column);
        auto left2 = LoadComparable(d, column + 1);
        column += stride;
        auto above = LoadComparable(d, column - 1);
        auto value = LoadComparable(d, column);
        auto below = LoadComparable(d, column + 1);
        auto blocks = hn::Add(steps, hn::Set(d, first + 256 * static_cast<unsigned int>(at)));
        // Written out, a column's neighbours are the next one's without being moved. The number is kLbpColumnsAtOnce.
#pragma GCC unroll 8
        for (size_t c = 0; c < kColumns; ++c) {
            column += stride;
            if (kColumns > 1) {
                FetchAhead<0>(column, kColumns * stride);
                FetchAhead<1>(slots + at, (kColumns + c) * slotStride);
            }
            const auto right0 = LoadComparable(d, column - 1);
            const auto right1 = LoadComparable(d, column);
            const auto right2 = LoadComparable(d, column + 1);
            const auto slot = Slot(blocks, left0, left1, left2, above, value, below, right0, right1, right2);
            hn::StoreU(slot, d, slots + c * slotStride + at);
            left0 = above, left1 = value, left2 = below;
            above = right0, value = right1, below = right2;
            blocks = hn::Add(blocks, hn::Set(d, firstStep));
        }
    });
}

template <size_t kColumns>
void ListSlots(const unsigned int* centre, size_t stride, size_t count, unsigned int first, unsigned int firstStep,
               unsigned int* slots, size_t slotStride) {
    WithLongestVector<unsigned int, 16, 4>(count, [&](auto d) KORVANE_INLINE {
        ListWholeVectors<kColumns>(d, centre, stride, count, first, firstStep, slots, slotStride);
    });
}

void Halve(const LbpLevel& level, size_t x) {
    const WideTag d;
    const size_t rows = level.rows / 2;
    unsigned int* column = level.img + x * level.stride;
    const unsigned int* left = level.img + 2 * x * level.stride;
    const unsigned int* right = left + level.stride;
    size_t r = ForWholeSteps(0, 2 * rows, hn::Lanes(d), [&](size_t i) KORVANE_INLINE {
        hn::StoreU(hn::Add(hn::LoadU(d, left + i), hn::LoadU(d, right + i)), d, column + i);
    });
    for (; r < 2 * rows; ++r) {
        column[r] = left[r] + right[r];
    }
    r = ForWholeSteps(0, rows, hn::Lanes(d), [&](size_t i) KORVANE_INLINE {
        hn::Vec<WideTag> even;
        hn::Vec<WideTag> odd;
        hn::LoadInterleaved2(d, column + 2 * i, even, odd);
        hn::StoreU(hn::Add(even, odd), d, column + i);
    });
    for (; r < rows; ++r) {
        column[r] = column[2 * r] + column[2 * r + 1];
    }
}

// Calls action(slot) for each slot that is on. Most of the time goes to waiting for the slots' memory. So slots are
// listed a chunk ahead: while one chunk is worked off, the cache lines of the next are on their way.
template <typename Action>
void WalkSlots(unsigned int vec_nDim, unsigned int* img, unsigned short rows, unsigned short cols, Action action) {
    constexpr size_t kChunk = 64;
    unsigned int buffers[2][kChunk];
    unsigned int* fetched = buffers[0];
    unsigned int* listed = buffers[1];
    size_t fetchedCount = 0;
    const auto add_chunk = [&](const unsigned int* centre, size_t count, size_t position) HWY_ATTR {
        // In locals: a slot is a byte, which may be any of the captured variables as far as the compiler knows, and a
        // processor that reads them anew behind each slot waits for the slot's memory.
        const Action act = action;
        unsigned int* const coming = listed;
        unsigned int* const due = fetched;
        const size_t dueCount = fetchedCount;
        const size_t first = position * kLbpSlotsPerPosition;
        ListSlots<1>(centre, rows, count, static_cast<unsigned int>(first), 0, coming, 0);
        const size_t both = HWY_MIN(count, dueCount);
        for (size_t i = 0; i < both; ++i) {
            act.fetch(coming[i]);
            act(due[i]);
        }
        for (size_t i = both; i < count; ++i) {
            act.fetch(coming[i]);
        }
        for (size_t i = both; i < dueCount; ++i) {
            act(due[i]);
        }
        fetched = coming;
        listed = due;
        fetchedCount = count;
    };
    const auto visit = [&](const unsigned int* centre, size_t columns, size_t count, size_t position) HWY_ATTR {
        for (size_t c = 0; c < columns; ++c) {
            for (size_t begin = 0; begin < count; begin += kChunk) {
                add_chunk(centre + c * rows + begin, HWY_MIN(kChunk, count - begin), position + c * count + begin);
            }
        }
    };
    lbp_walk({img, rows, rows, cols}, lbp_positions_for(vec_nDim), visit, Halve);
    // Only the last block can reach past the end; no slot before it wraps.
    for (size_t i = 0; i < fetchedCount; ++i) {
        if (fetched[i] < vec_nDim) {
            action(fetched[i]);
        }
    }
}

void Features(char* vec, unsigned int vec_nDim, unsigned int* img, unsigned short rows, unsigned short cols) {
    WalkSlots(vec_nDim, img, rows, cols, LbpCount{vec});
}

void FeaturesSparse(unsigned int* vec, unsigned int vec_nDim, unsigned int* img, unsigned short rows,
                    unsigned short cols) {
    const auto visit = [=](const unsigned int* centre, size_t columns, size_t count, size_t position) HWY_ATTR {
        const auto first = static_cast<unsigned int>(position * kLbpSlotsPerPosition);
        const auto firstStep = static_cast<unsigned int>(count * kLbpSlotsPerPosition);
        if (columns == kLbpColumnsAtOnce) {
            ListSlots<kLbpColumnsAtOnce>(centre, rows, count, first, firstStep, vec + position, count);
        } else {
            ListSlots<1>(centre, rows, count, first, firstStep, vec + position, count);
        }
    };
    lbp_walk({img, rows, rows, cols}, vec_nDim, visit, Halve);
}

double DotProduct(double* vec, unsigned int vec_nDim, unsigned int* img, unsigned short rows, unsigned short cols) {
    double sum = 0;
    WalkSlots(vec_nDim, img, rows, cols, LbpSum{vec, &sum});
    return sum;
}

void AddVector(long* vec, unsigned int vec_nDim, unsigned int* img, unsigned short rows, unsigned short cols) {
    WalkSlots(vec_nDim, img, rows, cols, LbpStep{vec, 1UL});
}

void SubtractVector(long* vec, unsigned int vec_nDim, unsigned int* img, unsigned short rows, unsigned short cols) {
    WalkSlots(vec_nDim, img, rows, cols, LbpStep{vec, ~0UL});
}

#else

constexpr auto& Features = lbp_pyr_features_scalar;
constexpr auto& FeaturesSparse = lbp_pyr_features_sparse_scalar;
constexpr auto& DotProduct = lbp_pyr_dotprod_scalar;
constexpr auto& AddVector = lbp_pyr_addvec_scalar;
constexpr auto& SubtractVector = lbp_pyr_subvec_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(Features);
KORVANE_DISPATCH(FeaturesSparse);
KORVANE_DISPATCH(DotProduct);
KORVANE_DISPATCH(AddVector);
KORVANE_DISPATCH(SubtractVector);

}  // namespace
}  // namespace korvane

void lbp_pyr_features(char* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                      unsigned short img_nCols) {
    if (vec != nullptr && img != nullptr) {
        korvane::Features(vec, vec_nDim, img, img_nRows, img_nCols);
    }
}

void lbp_pyr_features_sparse(unsigned int* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                             unsigned short img_nCols) {
    if (vec != nullptr && img != nullptr) {
        korvane::FeaturesSparse(vec, vec_nDim, img, img_nRows, img_nCols);
    }
}

double lbp_pyr_dotprod(double* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                       unsigned short img_nCols) {
    if (vec == nullptr || img == nullptr) {
        return 0.0;
    }
    return korvane::DotProduct(vec, vec_nDim, img, img_nRows, img_nCols);
}

void lbp_pyr_addvec(long* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                    unsigned short img_nCols) {
    if (vec != nullptr && img != nullptr) {
        korvane::AddVector(vec, vec_nDim, img, img_nRows, img_nCols);
    }
}

void lbp_pyr_subvec(long* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                    unsigned short img_nCols) {
    if (vec != nullptr && img != nullptr) {
        korvane::SubtractVector(vec, vec_nDim, img, img_nRows, img_nCols);
    }
}

#endif
