// SPDX-License-Identifier: Apache-2.0
#include "applications/gif_maker/palette_refinement.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "applications/gif_maker/palette_refinement_scalar.h"
#include "applications/gif_maker/pixel_tally.h"

// Only a few colors of a palette can be nearest to a pixel of one cell: those whose distance to the nearest point of
// the cell is not above the distance of some color to its farthest point. Each cell gets a short list of them. Then
// those are struck off that are farther than the color nearest to the cell's centre wherever in the cell a pixel may
// lie: the difference of two squared distances is a linear function, whose least value is that of a corner.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "applications/gif_maker/palette_refinement.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include "frameworks/simd/factors-inl.h"
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/steps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

int32_t squared(int32_t value) {
    return value * value;
}

// Of a color channel to the values base ... base + 7.
int32_t farthest(int32_t channel, int32_t base) {
    return std::max(channel - base, base + kCellWidth - 1 - channel);
}

using Tag = hn::CappedTag<int32_t, 16>;
constexpr size_t kMaxLanes = 16;
constexpr size_t kListSize = kMaxPaletteColors + kMaxLanes;
constexpr int32_t kFarChannel = 8000;  // of the entries that fill up the last vector

struct Candidate {
    int32_t constant;
    int32_t redFactor;
    int32_t greenFactor;  // for a green that stands where it does in LowBits
    int32_t blueFactor;
};

class Refinement {
  public:
    Refinement(const CellPixels& pixels, const PaletteColors& palette, const PaletteSums& sums)
        : m_Pixels(pixels), m_Sums(sums), m_Count(palette.count) {
        const auto copy = [&](const int32_t* from, int32_t* to) {
            std::fill(std::copy(from, from + m_Count, to), to + kListSize, kFarChannel);
        };
        copy(palette.red, m_Red);
        copy(palette.green, m_Green);
        copy(palette.blue, m_Blue);
    }

    void Run(const int32_t* guesses) {
        for (size_t r = 0; r < kCellsPerAxis; ++r) {
            if (IsEmpty(cell_index(r, 0, 0), cell_index(r + 1, 0, 0))) {
                continue;
            }
            AddDistances(m_Red, cell_base(r, 0, 0).red, m_Zeros, m_RedDistances);
            for (size_t g = 0; g < kCellsPerAxis; ++g) {
                if (IsEmpty(cell_index(r, g, 0), cell_index(r, g + 1, 0))) {
                    continue;
                }
                AddDistances(m_Green, cell_base(r, g, 0).green, m_RedDistances, m_RedGreenDistances);
                for (size_t b = 0; b < kCellsPerAxis; ++b) {
                    const size_t cell = cell_index(r, g, b);
                    if (!IsEmpty(cell, cell + 1)) {
                        m_Base = cell_base(r, g, b);
                        ListCandidates(static_cast<size_t>(guesses[cell]));
                        AddPixels(m_Pixels.begin(cell), m_Pixels.begin(cell + 1));
                    }
                }
            }
        }
    }

  private:
    bool IsEmpty(size_t firstCell, size_t endCell) const {
        return m_Pixels.begin(firstCell) == m_Pixels.begin(endCell);
    }

    // Squared, from each entry to the nearest of the values base ... base + 7; 0 inside.
    template <class V>
    static HWY_INLINE V DistanceToCell(V channel, V base) {
        const Tag d;
        const V below = hn::Sub(base, channel);
        const V above = hn::Sub(hn::Sub(channel, base), hn::Set(d, kCellWidth - 1));
        const V outside = hn::Max(hn::Max(below, above), hn::Zero(d));
        return hn::Mul(outside, outside);
    }

    void AddDistances(const int32_t* channel, int32_t base, const int32_t* before, int32_t* after) const {
        const Tag d;
        for (size_t k = 0; k < m_Count; k += hn::Lanes(d)) {
            const auto distance = DistanceToCell(hn::Load(d, channel + k), hn::Set(d, base));
            hn::Store(hn::Add(hn::Load(d, before + k), distance), d, after + k);
        }
    }

    int32_t FarthestInCell(size_t entry) const {
        return squared(farthest(m_Red[entry], m_Base.red)) + squared(farthest(m_Green[entry], m_Base.green)) +
               squared(farthest(m_Blue[entry], m_Base.blue));
    }

    // In ascending order.
    void ListCandidates(size_t guess) {
        const Tag d;
        const auto limit = hn::Set(d, FarthestInCell(guess) + 1);
        const auto base = hn::Set(d, m_Base.blue);
        m_Listed = 0;
        for (size_t k = 0; k < m_Count; k += hn::Lanes(d)) {
            const auto distance =
                hn::Add(hn::Load(d, m_RedGreenDistances + k), DistanceToCell(hn::Load(d, m_Blue + k), base));
            const auto isNear = hn::Lt(distance, limit);
            if (!hn::AllFalse(d, isNear)) {
                m_Listed += hn::CompressStore(hn::Iota(d, static_cast<int32_t>(k)), isNear, d, m_List + m_Listed);
            }
        }
        StrikeOff(NearestToCentre());
    }

    // Seen from the cell's base.
    HWY_INLINE CellBase Offset(int32_t entry) const {
        return {m_Red[entry] - m_Base.red, m_Green[entry] - m_Base.green, m_Blue[entry] - m_Base.blue};
    }

    static HWY_INLINE int32_t SquaredLength(const CellBase& offset) {
        return squared(offset.red) + squared(offset.green) + squared(offset.blue);
    }

    CellBase NearestToCentre() const {
        CellBase nearest{};
        int32_t least = 0x7FFFFFFF;
        for (size_t i = 0; i < m_Listed; ++i) {
            const CellBase offset = Offset(m_List[i]);
            // But for a constant, its squared distance.
            const int32_t distance =
                SquaredLength(offset) - (kCellWidth - 1) * (offset.red + offset.green + offset.blue);
            if (distance < least) {
                least = distance;
                nearest = offset;
            }
        }
        return nearest;
    }

    // Distances from the pixel at the cell's base are held times 512, plus the place in the list. So the least sum
    // tells both, and the lowest entry wins ties.
    HWY_INLINE void StrikeOff(const CellBase& nearest) {
        const int32_t fromBase = SquaredLength(nearest);
        size_t kept = 0;
        for (size_t i = 0; i < m_Listed; ++i) {
            const int32_t entry = m_List[i];
            const CellBase offset = Offset(entry);
            const int32_t length = SquaredLength(offset);
            const int32_t towards = std::max(offset.red - nearest.red, 0) + std::max(offset.green - nearest.green, 0) +
                                    std::max(offset.blue - nearest.blue, 0);
            if (length - fromBase <= 2 * (kCellWidth - 1) * towards) {
                m_List[kept] = entry;
                m_Candidates[kept] = {length * 512 + static_cast<int32_t>(kept), offset.red * -1024,
                                      offset.green * -128, offset.blue * -1024};
                ++kept;
            }
        }
        m_Listed = kept;
    }

    void AddPixels(size_t begin, size_t end) {
        for (size_t i = begin; i < end; i += kPixelsPerTally) {
            const size_t stop = HWY_MIN(end, i + kPixelsPerTally);
            if (m_Listed == 1) {
                uint64_t tally = 0;
                for (size_t pixel = i; pixel < stop; ++pixel) {
                    tally += kTallySteps[m_Pixels.low()[pixel]];
                }
                add_tally(tally, m_Base, static_cast<size_t>(m_List[0]), m_Sums);
                continue;
            }
            std::fill_n(m_Tallies, m_Listed, uint64_t{0});
            for (size_t chunk = i; chunk < stop; chunk += kChunk) {
                const size_t count = HWY_MIN(kChunk, stop - chunk);
                Choose(m_Pixels.low() + chunk, count);
                TallyChunk(m_Pixels.low() + chunk, count);
            }
            for (size_t k = 0; k < m_Listed; ++k) {
                add_tally(m_Tallies[k], m_Base, static_cast<size_t>(m_List[k]), m_Sums);
            }
        }
    }

    // The place in the list of each pixel's entry.
    HWY_INLINE void Choose(const uint16_t* low, size_t count) {
        const Tag d;
        const hn::Rebind<uint16_t, Tag> dLow;
        const size_t lanes = hn::Lanes(d);
        const auto seven = hn::Set(d, 7);
        const auto greenMask = hn::Set(d, 7 << 3);
        const Candidate* const end = m_Candidates + m_Listed;
        // Two vectors at a time share what is loaded for a candidate.
        for (size_t i = 0; i < count; i += 2 * lanes) {
            const auto a = hn::PromoteTo(d, hn::LoadU(dLow, low + i));
            const auto b = hn::PromoteTo(d, hn::LoadU(dLow, low + i + lanes));
            const auto redA = hn::And(a, seven), redB = hn::And(b, seven);
            const auto greenA = hn::And(a, greenMask), greenB = hn::And(b, greenMask);
            const auto blueA = hn::ShiftRight<6>(a), blueB = hn::ShiftRight<6>(b);
            auto bestA = hn::Set(d, 0x7FFFFFFF);
            auto bestB = bestA;
            for (const Candidate* candidate = m_Candidates; candidate != end; ++candidate) {
                const auto numbers = LoadNumbers(&candidate->constant);
                const auto sum = [&](auto red, auto green, auto blue) KORVANE_INLINE {
                    const auto withRed = PlusTimesNumber<1>(NumberInAllLanes<0>(d, numbers), red, numbers);
                    return PlusTimesNumber<3>(PlusTimesNumber<2>(withRed, green, numbers), blue, numbers);
                };
                bestA = hn::Min(bestA, sum(redA, greenA, blueA));
                bestB = hn::Min(bestB, sum(redB, greenB, blueB));
            }
            hn::Store(hn::And(bestA, hn::Set(d, 511)), d, m_Chosen + i);
            hn::Store(hn::And(bestB, hn::Set(d, 511)), d, m_Chosen + i + lanes);
        }
    }

    HWY_INLINE void TallyChunk(const uint16_t* low, size_t count) {
        uint64_t* const tallies = m_Tallies;
        const int32_t* const chosen = m_Chosen;
        const auto add = [&](size_t i) KORVANE_INLINE { tallies[chosen[i]] += kTallySteps[low[i]]; };
        for (size_t i = ForShortSteps(0, count, 1, add); i < count; ++i) {
            add(i);
        }
    }

    static constexpr size_t kChunk = 256;

    const CellPixels& m_Pixels;
    const PaletteSums m_Sums;
    const size_t m_Count;
    CellBase m_Base{};

    alignas(64) int32_t m_Red[kListSize];
    alignas(64) int32_t m_Green[kListSize];
    alignas(64) int32_t m_Blue[kListSize];
    alignas(64) int32_t m_Zeros[kListSize] = {};
    alignas(64) int32_t m_RedDistances[kListSize];
    alignas(64) int32_t m_RedGreenDistances[kListSize];

    // The short list of the cell in work.
    size_t m_Listed = 0;
    int32_t m_List[kListSize];
    Candidate m_Candidates[kMaxPaletteColors];
    uint64_t m_Tallies[kMaxPaletteColors];
    alignas(64) int32_t m_Chosen[kChunk];
};

void RefinePalette(const CellPixels& pixels, const PaletteColors& palette, const int32_t* guesses,
                   const PaletteSums& sums) {
    Refinement(pixels, palette, sums).Run(guesses);
}

#else

constexpr auto& RefinePalette = refine_palette_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(RefinePalette);

}  // namespace

void refine_palette(const CellPixels& pixels, const PaletteColors& palette, const int32_t* guesses,
                    const PaletteSums& sums) {
    RefinePalette(pixels, palette, guesses, sums);
}

}  // namespace korvane

#endif
