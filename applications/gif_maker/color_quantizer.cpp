// SPDX-License-Identifier: Apache-2.0
#include "applications/gif_maker/color_quantizer.h"

#include <algorithm>
#include <limits>

#include "applications/gif_maker/cell_pixels.h"
#include "applications/gif_maker/palette_refinement.h"
#include "frameworks/core/guard.h"
#include "frameworks/core/memory.h"

namespace {

using korvane::LowBits;

// Of the cumulative sums, which begin with a zero on each axis: pixel cell 0 is their cell 1.
constexpr size_t kSide = korvane::kCellsPerAxis + 1;
constexpr size_t kPlane = kSide * kSide;
constexpr size_t kCells = kSide * kSide * kSide;
constexpr int32_t kLastCell = korvane::kCellsPerAxis;

static_assert(ColorQuantizer::kMaxColors == korvane::kMaxPaletteColors);

// Gives the quantizer's arrays their memory, zeroed. Only an array without elements may do without.
struct MakeArray {
    template <typename T>
    bool operator()(T*& array, size_t count) const {
        array = static_cast<T*>(galloc_alloc(count * sizeof(T)));
        return array != nullptr || count == 0;
    }

    // kSide^3 cells behind the pointers that let them be written a[red][green][blue]; one block for galloc_free.
    template <typename T>
    bool operator()(T***& cube, size_t /*cells*/) const {
        void* block = galloc_alloc(kSide * sizeof(T**) + kPlane * sizeof(T*) + kCells * sizeof(T));
        cube = static_cast<T***>(block);
        if (block == nullptr) {
            return false;
        }
        T** rows = reinterpret_cast<T**>(cube + kSide);
        T* cells = reinterpret_cast<T*>(rows + kPlane);
        for (size_t i = 0; i < kPlane; ++i) {
            rows[i] = cells + i * kSide;
        }
        for (size_t i = 0; i < kSide; ++i) {
            cube[i] = rows + i * kSide;
        }
        return true;
    }
};

struct FreeArray {
    template <typename T>
    bool operator()(T*& array, size_t /*count*/) const {
        galloc_free(array);
        array = nullptr;
        return true;
    }
};

struct CellSums {
    int64_t red;
    int64_t green;
    int64_t blue;
    float squares;
};

// Of the pixels of one cell. The first loop is left to the compiler's vectors; what is added up in single precision is
// added in the order of the pixels, since palettes depend on how it rounds.
CellSums sums_of(const uint16_t* low, size_t count, const korvane::CellBase& base) {
    constexpr size_t kChunk = 256;
    const auto baseRed = static_cast<uint16_t>(base.red);
    const auto baseGreen = static_cast<uint16_t>(base.green);
    const auto baseBlue = static_cast<uint16_t>(base.blue);
    float squares[kChunk];
    CellSums sums = {};
    for (size_t done = 0; done < count; done += kChunk) {
        const size_t length = std::min(kChunk, count - done);
        uint32_t reds = 0;
        uint32_t greens = 0;
        uint32_t blues = 0;
        for (size_t i = 0; i < length; ++i) {
            // 16 bits are enough, and vectors hold twice as many of them.
            const auto red = static_cast<uint16_t>(baseRed + LowBits::red(low[done + i]));
            const auto green = static_cast<uint16_t>(baseGreen + LowBits::green(low[done + i]));
            const auto blue = static_cast<uint16_t>(baseBlue + LowBits::blue(low[done + i]));
            reds += red;
            greens += green;
            blues += blue;
            squares[i] = static_cast<float>(
                static_cast<int32_t>(uint32_t{red} * red + uint32_t{green} * green + uint32_t{blue} * blue));
        }
        sums.red += reds;
        sums.green += greens;
        sums.blue += blues;
        korvane::four_a_round(squares, length, [&](float square) { sums.squares += square; });
    }
    return sums;
}

// Turns the cells into sums over all cells with no coordinate greater.
template <typename T>
void accumulate(T*** cube) {
    for (size_t r = 1; r < kSide; ++r) {
        T area[kSide] = {};
        for (size_t g = 1; g < kSide; ++g) {
            T line = 0;
            for (size_t b = 1; b < kSide; ++b) {
                line += cube[r][g][b];
                area[b] += line;
                cube[r][g][b] = cube[r - 1][g][b] + area[b];
            }
        }
    }
}

// The sum over a box, by inclusion and exclusion; Sum is what the terms are added in.
template <typename Sum, typename T>
Sum sum_over(const ColorCube& cube, T*** moment) {
    const auto at = [moment](int32_t r, int32_t g, int32_t b) { return static_cast<Sum>(moment[r][g][b]); };
    return at(cube.RedMaximum, cube.GreenMaximum, cube.BlueMaximum) -
           at(cube.RedMaximum, cube.GreenMaximum, cube.BlueMinimum) -
           at(cube.RedMaximum, cube.GreenMinimum, cube.BlueMaximum) +
           at(cube.RedMaximum, cube.GreenMinimum, cube.BlueMinimum) -
           at(cube.RedMinimum, cube.GreenMaximum, cube.BlueMaximum) +
           at(cube.RedMinimum, cube.GreenMaximum, cube.BlueMinimum) +
           at(cube.RedMinimum, cube.GreenMinimum, cube.BlueMaximum) -
           at(cube.RedMinimum, cube.GreenMinimum, cube.BlueMinimum);
}

int64_t volume(const ColorCube& cube, int64_t*** moment) {
    return sum_over<int64_t>(cube, moment);
}

double volumeFloat(const ColorCube& cube, float*** moment) {
    return sum_over<double>(cube, moment);
}

enum class Axis { kRed, kGreen, kBlue };

struct AxisBounds {
    int32_t ColorCube::*minimum;
    int32_t ColorCube::*maximum;
};

constexpr AxisBounds kAxisBounds[] = {{&ColorCube::RedMinimum, &ColorCube::RedMaximum},
                                      {&ColorCube::GreenMinimum, &ColorCube::GreenMaximum},
                                      {&ColorCube::BlueMinimum, &ColorCube::BlueMaximum}};

// A box's sum up to `position` on an axis is top + bottom: top depends on `position`, bottom does not.
int64_t top(const ColorCube& cube, Axis axis, int32_t position, int64_t*** moment) {
    switch (axis) {
        case Axis::kRed:
            return moment[position][cube.GreenMaximum][cube.BlueMaximum] -
                   moment[position][cube.GreenMaximum][cube.BlueMinimum] -
                   moment[position][cube.GreenMinimum][cube.BlueMaximum] +
                   moment[position][cube.GreenMinimum][cube.BlueMinimum];
        case Axis::kGreen:
            return moment[cube.RedMaximum][position][cube.BlueMaximum] -
                   moment[cube.RedMaximum][position][cube.BlueMinimum] -
                   moment[cube.RedMinimum][position][cube.BlueMaximum] +
                   moment[cube.RedMinimum][position][cube.BlueMinimum];
        default:
            return moment[cube.RedMaximum][cube.GreenMaximum][position] -
                   moment[cube.RedMaximum][cube.GreenMinimum][position] -
                   moment[cube.RedMinimum][cube.GreenMaximum][position] +
                   moment[cube.RedMinimum][cube.GreenMinimum][position];
    }
}

int64_t bottom(const ColorCube& cube, Axis axis, int64_t*** moment) {
    return -top(cube, axis, cube.*kAxisBounds[static_cast<size_t>(axis)].minimum, moment);
}

struct Sums {
    int64_t red;
    int64_t green;
    int64_t blue;
    int64_t weight;
};

// In double, since the square of a channel sum passes 64 bits from about 6.9 million bright pixels.
double squared_length(const Sums& sums) {
    const double red = static_cast<double>(sums.red);
    const double green = static_cast<double>(sums.green);
    const double blue = static_cast<double>(sums.blue);
    return red * red + green * green + blue * blue;
}

struct BestCut {
    double score;
    int32_t position;  // -1: none
};

template <typename SumsUpTo>
BestCut maximize(const ColorCube& cube, Axis axis, const Sums& whole, const SumsUpTo& sums_up_to) {
    BestCut best = {0.0, -1};
    const AxisBounds& bounds = kAxisBounds[static_cast<size_t>(axis)];
    for (int32_t position = cube.*bounds.minimum + 1; position < cube.*bounds.maximum; ++position) {
        const Sums lower = sums_up_to(position);
        const Sums upper = {whole.red - lower.red, whole.green - lower.green, whole.blue - lower.blue,
                            whole.weight - lower.weight};
        if (lower.weight == 0 || upper.weight == 0) {
            continue;
        }
        const double score = squared_length(lower) / static_cast<double>(lower.weight) +
                             squared_length(upper) / static_cast<double>(upper.weight);
        if (score > best.score) {
            best = {score, position};
        }
    }
    return best;
}

int32_t cells_in(const ColorCube& cube) {
    return (cube.RedMaximum - cube.RedMinimum) * (cube.GreenMaximum - cube.GreenMinimum) *
           (cube.BlueMaximum - cube.BlueMinimum);
}

}  // namespace

ColorQuantizer::ColorQuantizer() = default;

ColorQuantizer::~ColorQuantizer() {
    // Not a virtual call: a subclass's part is gone by now.
    ColorQuantizer::release();
}

void ColorQuantizer::prepare(int32_t width, int height) {
    release();
    const int64_t size = static_cast<int64_t>(width) * height;
    if (width < 0 || height < 0 || size > std::numeric_limits<int32_t>::max()) {
        return;
    }
    imageWidth = width;
    imageSize = static_cast<int32_t>(size);
    if (!eachImageArray(MakeArray())) {
        release();
        return;
    }
    cubes[0] = {0, kLastCell, 0, kLastCell, 0, kLastCell, kLastCell * kLastCell * kLastCell};
    m_IsPrepared = true;
}

// What prepare makes and release frees.
template <typename Visit>
bool ColorQuantizer::eachImageArray(const Visit& visit) {
    const auto pixels = static_cast<size_t>(imageSize);
    return visit(cubes, kMaxColors) && visit(weights, kCells) && visit(momentsRed, kCells) &&
           visit(momentsGreen, kCells) && visit(momentsBlue, kCells) && visit(moments, kCells) &&
           visit(quantizedPixels, pixels);
}

// What getPalette makes and frees.
template <typename Visit>
bool ColorQuantizer::eachPaletteArray(size_t entries, const Visit& visit) {
    return visit(tag, korvane::kHistogramCells) && visit(reds, entries) && visit(greens, entries) &&
           visit(blues, entries) && visit(sums, entries);
}

void ColorQuantizer::addColor(int32_t r, int32_t g, int32_t b) {
    // Called for every pixel: one test of all three channels.
    const auto at = static_cast<uint32_t>(pixelIndex);
    if (at >= static_cast<uint32_t>(imageSize)) {
        return;
    }
    if (((r | g | b) & ~0xFF) != 0) {
        r = std::clamp(r, 0, 255);
        g = std::clamp(g, 0, 255);
        b = std::clamp(b, 0, 255);
    }
    pixelIndex = static_cast<int32_t>(at + 1);
    quantizedPixels[at] =
        korvane::CellPixel::of(static_cast<uint32_t>(r), static_cast<uint32_t>(g), static_cast<uint32_t>(b));
}

std::vector<Color>& ColorQuantizer::getPalette(int32_t colorCount) {
    colors.clear();
    if (!m_IsPrepared || colorCount < 1) {
        return colors;
    }
    m_IsPrepared = false;
    korvane::CellPixels pixels;
    if (pixels.sort(quantizedPixels, static_cast<size_t>(pixelIndex))) {
        fillHistogram(pixels);
        calculateMoments();
        const int32_t boxCount = splitBoxes(std::min(colorCount, kMaxColors));
        if (refine(pixels, boxCount)) {
            appendMeans(boxCount);
        }
    }
    imageSize = 0;
    pixelIndex = 0;
    eachPaletteArray(0, FreeArray());
    return colors;
}

void ColorQuantizer::fillHistogram(const korvane::CellPixels& pixels) {
    for (size_t r = 0; r < korvane::kCellsPerAxis; ++r) {
        for (size_t g = 0; g < korvane::kCellsPerAxis; ++g) {
            for (size_t b = 0; b < korvane::kCellsPerAxis; ++b) {
                const size_t cell = korvane::cell_index(r, g, b);
                const size_t begin = pixels.begin(cell);
                const size_t end = pixels.begin(cell + 1);
                if (begin == end) {
                    continue;
                }
                const CellSums sums = sums_of(pixels.low() + begin, end - begin, korvane::cell_base(r, g, b));
                weights[r + 1][g + 1][b + 1] = static_cast<int64_t>(end - begin);
                momentsRed[r + 1][g + 1][b + 1] = sums.red;
                momentsGreen[r + 1][g + 1][b + 1] = sums.green;
                momentsBlue[r + 1][g + 1][b + 1] = sums.blue;
                moments[r + 1][g + 1][b + 1] = sums.squares;
            }
        }
    }
}

void ColorQuantizer::calculateMoments() {
    accumulate(weights);
    accumulate(momentsRed);
    accumulate(momentsGreen);
    accumulate(momentsBlue);
    accumulate(moments);
}

// Returns the number of boxes made.
int32_t ColorQuantizer::splitBoxes(int32_t colorCount) {
    double variances[kMaxColors] = {};
    const auto variance_of = [this](const ColorCube& cube) { return cube.Volume > 1 ? calculateVariance(cube) : 0.0; };
    int32_t boxCount = 1;
    int32_t next = 0;
    while (boxCount < colorCount) {
        if (cut(cubes[next], cubes[boxCount])) {
            variances[next] = variance_of(cubes[next]);
            variances[boxCount] = variance_of(cubes[boxCount]);
            ++boxCount;
        } else {
            // It will not be chosen again.
            variances[next] = 0.0;
        }
        const double* largest = std::max_element(variances, variances + boxCount);
        if (*largest <= 0.0) {
            break;
        }
        next = static_cast<int32_t>(largest - variances);
    }
    return boxCount;
}

bool ColorQuantizer::cut(ColorCube& first, ColorCube& second) const {
    const Sums whole = {volume(first, momentsRed), volume(first, momentsGreen), volume(first, momentsBlue),
                        volume(first, weights)};
    constexpr Axis kAxes[] = {Axis::kRed, Axis::kGreen, Axis::kBlue};
    BestCut best = {-1.0, -1};
    Axis bestAxis = Axis::kRed;
    for (const Axis axis : kAxes) {
        const Sums base = {bottom(first, axis, momentsRed), bottom(first, axis, momentsGreen),
                           bottom(first, axis, momentsBlue), bottom(first, axis, weights)};
        const BestCut candidate = maximize(first, axis, whole, [&](int32_t position) {
            return Sums{base.red + top(first, axis, position, momentsRed),
                        base.green + top(first, axis, position, momentsGreen),
                        base.blue + top(first, axis, position, momentsBlue),
                        base.weight + top(first, axis, position, weights)};
        });
        if (candidate.score > best.score) {
            best = candidate;
            bestAxis = axis;
        }
    }
    if (best.position < 0) {
        return false;
    }
    const AxisBounds& bounds = kAxisBounds[static_cast<size_t>(bestAxis)];
    second = first;
    first.*bounds.maximum = best.position;
    second.*bounds.minimum = best.position;
    first.Volume = cells_in(first);
    second.Volume = cells_in(second);
    return true;
}

double ColorQuantizer::calculateVariance(const ColorCube& cube) const {
    const Sums sums = {volume(cube, momentsRed), volume(cube, momentsGreen), volume(cube, momentsBlue),
                       volume(cube, weights)};
    return volumeFloat(cube, moments) - squared_length(sums) / static_cast<double>(sums.weight);
}

void ColorQuantizer::mark(const ColorCube& cube, int32_t label) {
    // Cells of pixels count from 0, the box's from 1, and its minima are exclusive.
    for (int32_t r = cube.RedMinimum; r < cube.RedMaximum; ++r) {
        for (int32_t g = cube.GreenMinimum; g < cube.GreenMaximum; ++g) {
            int32_t* line = tag + korvane::cell_index(static_cast<size_t>(r), static_cast<size_t>(g), 0);
            std::fill(line + cube.BlueMinimum, line + cube.BlueMaximum, label);
        }
    }
}

// False when memory is short.
bool ColorQuantizer::refine(const korvane::CellPixels& pixels, int32_t boxCount) {
    if (!eachPaletteArray(static_cast<size_t>(boxCount) + 1, MakeArray())) {
        return false;
    }
    korvane::PaletteColors palette = {};
    palette.count = static_cast<size_t>(boxCount);
    for (int32_t k = 0; k < boxCount; ++k) {
        mark(cubes[k], k);
        const int64_t weight = volume(cubes[k], weights);
        if (weight > 0) {
            palette.red[k] = static_cast<int32_t>(volume(cubes[k], momentsRed) / weight);
            palette.green[k] = static_cast<int32_t>(volume(cubes[k], momentsGreen) / weight);
            palette.blue[k] = static_cast<int32_t>(volume(cubes[k], momentsBlue) / weight);
        }
    }
    korvane::refine_palette(pixels, palette, tag, {reds, greens, blues, sums});
    return true;
}

void ColorQuantizer::appendMeans(int32_t boxCount) {
    // Short memory leaves the palette empty.
    korvane::guarded([&] {
        colors.reserve(static_cast<size_t>(boxCount));
        for (int32_t k = 0; k < boxCount; ++k) {
            const int64_t divisor = std::max<int64_t>(sums[k], 1);
            colors.push_back({static_cast<int32_t>(reds[k] / divisor), static_cast<int32_t>(greens[k] / divisor),
                              static_cast<int32_t>(blues[k] / divisor), 255});
        }
    });
}

void ColorQuantizer::release() {
    m_IsPrepared = false;
    eachPaletteArray(0, FreeArray());
    eachImageArray(FreeArray());
    imageWidth = 0;
    imageSize = 0;
    pixelIndex = 0;
}
