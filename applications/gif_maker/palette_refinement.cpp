// SPDX-License-Identifier: Apache-2.0
#include "applications/gif_maker/palette_refinement.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "applications/gif_maker/palette_refinement_scalar.h"
#include "applications/gif_maker/pixel_tally.h"

// Only a few colors of a palette can be nearest to a pixel of one cell: those whose distance to the nearest point of
// the cell is not above the distance of some color to its farthest point. Each cell gets a short list of them to
// search.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "applications/gif_maker/palette_refinement.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include "frameworks/simd/kernel-inl.h"

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
        for (size_t r = 1; r < kCellsPerAxis; ++r) {
            if (IsEmpty(cell_index(r, 0, 0), cell_index(r + 1, 0, 0))) {
                continue;
            }
            AddDistances(m_Red, cell_base(r, 0, 0).red, m_Zeros, m_RedDistances);
            for (size_t g = 1; g < kCellsPerAxis; ++g) {
                if (IsEmpty(cell_index(r, g, 0), cell_index(r, g + 1, 0))) {
                    continue;
                }
                AddDistances(m_Green, cell_base(r, g, 0).green, m_RedDistances, m_RedGreenDistances);
                for (size_t b = 1; b < kCellsPerAxis; ++b) {
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

    // In ascending order. Distances from the pixel at the cell's base are held times 512, plus the place in the list.
    // So the least sum tells both, and the lowest entry wins ties.
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
        for (size_t i = 0; i < m_Listed; ++i) {
            const auto entry = static_cast<size_t>(m_List[i]);
            const int32_t red = m_Red[entry] - m_Base.red;
            const int32_t green = m_Green[entry] - m_Base.green;
            const int32_t blue = m_Blue[entry] - m_Base.blue;
            m_Constant[i] = (squared(red) + squared(green) + squared(blue)) * 512 + static_cast<int32_t>(i);
            m_RedFactor[i] = red * -1024;
            m_GreenFactor[i] = green * -1024;
            m_BlueFactor[i] = blue * -1024;
        }
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
                TallyChunk(m_Pixels.low() + chunk, HWY_MIN(kChunk, stop - chunk));
            }
            for (size_t k = 0; k < m_Listed; ++k) {
                add_tally(m_Tallies[k], m_Base, static_cast<size_t>(m_List[k]), m_Sums);
            }
        }
    }

    HWY_INLINE void TallyChunk(const uint16_t* low, size_t count) {
        const Tag d;
        const hn::Rebind<uint16_t, Tag> dLow;
        const auto seven = hn::Set(d, 7);
        for (size_t i = 0; i < count; i += hn::Lanes(d)) {
            const auto pixel = hn::PromoteTo(d, hn::LoadU(dLow, low + i));
            const auto red = hn::And(pixel, seven);
            const auto green = hn::And(hn::ShiftRight<3>(pixel), seven);
            const auto blue = hn::ShiftRight<6>(pixel);
            auto best = hn::Set(d, 0x7FFFFFFF);
            for (size_t k = 0; k < m_Listed; ++k) {
                const auto redGreen =
                    hn::Add(hn::Mul(red, hn::Set(d, m_RedFactor[k])), hn::Mul(green, hn::Set(d, m_GreenFactor[k])));
                const auto rest = hn::Add(hn::Mul(blue, hn::Set(d, m_BlueFactor[k])), hn::Set(d, m_Constant[k]));
                best = hn::Min(best, hn::Add(redGreen, rest));
            }
            hn::Store(hn::And(best, hn::Set(d, 511)), d, m_Chosen + i);
        }
        for (size_t i = 0; i < count; ++i) {
            m_Tallies[m_Chosen[i]] += kTallySteps[low[i]];
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
    int32_t m_Constant[kMaxPaletteColors];
    int32_t m_RedFactor[kMaxPaletteColors];
    int32_t m_GreenFactor[kMaxPaletteColors];
    int32_t m_BlueFactor[kMaxPaletteColors];
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
