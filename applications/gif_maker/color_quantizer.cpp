// SPDX-License-Identifier: Apache-2.0
#include "applications/gif_maker/color_quantizer.h"

#include <algorithm>
#include <limits>

#include "applications/gif_maker/cell_pixels.h"
#include "applications/gif_maker/palette_refinement.h"
#include "frameworks/core/guard.h"
#include "frameworks/core/memory.h"

namespace {

using korvane::CellBase;
using korvane::LowBits;

constexpr size_t kSide = korvane::kCellsPerAxis;
constexpr size_t kPlane = kSide * kSide;
constexpr size_t kCells = korvane::kHistogramCells;
constexpr int32_t kLastCell = 32;
constexpr size_t kChannelValues = 256;

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
    for (size_t i = 0; i < kChannelValues; ++i) {
        table[i] = static_cast<int32_t>(i * i);
    }
    m_IsPrepared = true;
}

// What prepare makes and release frees.
template <typename Visit>
bool ColorQuantizer::eachImageArray(const Visit& visit) {
    const auto pixels = static_cast<size_t>(imageSize);
    return visit(cubes, kMaxColors) && visit(weights, kCells) && visit(momentsRed, kCells) &&
           visit(momentsGreen, kCells) && visit(momentsBlue, kCells) && visit(moments, kCells) &&
           visit(table, kChannelValues) && visit(quantizedPixels, pixels) && visit(pixelsR, pixels) &&
           visit(pixelsG, pixels) && visit(pixelsB, pixels);
}

// What getPalette makes and frees.
template <typename Visit>
bool ColorQuantizer::eachPaletteArray(size_t entries, const Visit& visit) {
    return visit(tag, kCells) && visit(reds, entries) && visit(greens, entries) && visit(blues, entries) &&
           visit(sums, entries);
}

void ColorQuantizer::addColor(int32_t r, int32_t g, int32_t b) {
    // Called for every pixel: one test of all three channels, and no field is read twice, since a store to a byte may
    // change any of them.
    const int32_t at = pixelIndex;
    if (at >= imageSize) {
        return;
    }
    if (((r | g | b) & ~0xFF) != 0) {
        r = std::clamp(r, 0, 255);
        g = std::clamp(g, 0, 255);
        b = std::clamp(b, 0, 255);
    }
    pixelIndex = at + 1;
    // Cell 0 of each axis stays empty: it is the zero that cumulative sums begin with.
    const auto cell_of = [](int32_t channel) { return static_cast<size_t>(channel >> 3) + 1; };
    quantizedPixels[at] = static_cast<int32_t>(korvane::cell_index(cell_of(r), cell_of(g), cell_of(b)));
    uint8_t* const red = pixelsR + at;
    uint8_t* const green = pixelsG + at;
    uint8_t* const blue = pixelsB + at;
    *red = static_cast<uint8_t>(r);
    *green = static_cast<uint8_t>(g);
    *blue = static_cast<uint8_t>(b);
}

std::vector<Color>& ColorQuantizer::getPalette(int32_t colorCount) {
    colors.clear();
    if (!m_IsPrepared || colorCount < 1) {
        return colors;
    }
    m_IsPrepared = false;
    korvane::CellPixels pixels;
    if (pixels.sort({pixelsR, pixelsG, pixelsB, quantizedPixels, static_cast<size_t>(pixelIndex)})) {
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
    for (size_t r = 1; r < kSide; ++r) {
        for (size_t g = 1; g < kSide; ++g) {
            for (size_t b = 1; b < kSide; ++b) {
                const size_t cell = korvane::cell_index(r, g, b);
                const CellBase base = korvane::cell_base(r, g, b);
                Sums sums = {};
                // Single precision, in the order of the pixels: palettes depend on how it rounds.
                float squares = 0;
                for (size_t i = pixels.begin(cell); i < pixels.begin(cell + 1); ++i) {
                    const uint16_t low = pixels.low()[i];
                    const int32_t red = base.red + LowBits::red(low);
                    const int32_t green = base.green + LowBits::green(low);
                    const int32_t blue = base.blue + LowBits::blue(low);
                    sums.red += red;
                    sums.green += green;
                    sums.blue += blue;
                    squares += static_cast<float>(table[red] + table[green] + table[blue]);
                }
                weights[r][g][b] = static_cast<int64_t>(pixels.begin(cell + 1) - pixels.begin(cell));
                momentsRed[r][g][b] = sums.red;
                momentsGreen[r][g][b] = sums.green;
                momentsBlue[r][g][b] = sums.blue;
                moments[r][g][b] = squares;
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
    for (int32_t r = cube.RedMinimum + 1; r <= cube.RedMaximum; ++r) {
        for (int32_t g = cube.GreenMinimum + 1; g <= cube.GreenMaximum; ++g) {
            int32_t* line = tag + static_cast<size_t>(r) * kPlane + static_cast<size_t>(g) * kSide;
            std::fill(line + cube.BlueMinimum + 1, line + cube.BlueMaximum + 1, label);
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
