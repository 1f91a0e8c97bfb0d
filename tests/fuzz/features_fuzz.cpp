// SPDX-License-Identifier: Apache-2.0
// LBP features and FAST corners of any small picture, with any parameters: the vector code of every instruction set
// against the plain loops.
#include "algorithms/fast_detection.h"
#include "algorithms/lbp.h"
#include "tests/fuzz/fuzz.h"

namespace {

void find_corners(Input& input) {
    const int width = input.between(1, 90);
    const int height = input.between(1, 24);
    const FastParams params = {input.hostile(255), input.between(0, 1), input.hostile(20), 0,
                               input.hostile(8),   input.hostile(8)};
    const Bytes image = input.bytes(static_cast<size_t>(width) * static_cast<size_t>(height));
    on_every_target([&] {
        std::vector<KeyPoint> corners(3);
        fast16(image.data(), corners, width, height, &params);
        std::vector<std::pair<int, int>> places;
        for (const KeyPoint& corner : corners) {
            REQUIRE(corner.values == nullptr && std::min(corner.x, corner.y) >= 0);
            REQUIRE(corner.x < width && corner.y < height);
            places.emplace_back(corner.x, corner.y);
        }
        return places;
    });
}

// `Feature` over the gray levels of a picture, with so many elements of what it writes or only reads.
template <typename T, auto kFeature>
void walk(const Bytes& picture, unsigned factor, unsigned count, uint16_t rows, uint16_t columns) {
    on_every_target([&] {
        auto levels = Input::buffer<unsigned>(picture.size());
        std::transform(picture.begin(), picture.end(), levels.begin(), [&](unsigned level) { return level * factor; });
        auto vec = Input::buffer<T>(count);
        for (unsigned i = 0; i < count; ++i) {
            vec[i] = static_cast<T>(1.0 / (i + 1));
        }
        if constexpr (std::is_same_v<T, double>) {
            return kFeature(vec.data(), count, levels.data(), rows, columns);
        } else {
            kFeature(vec.data(), count, levels.data(), rows, columns);
            return vec;
        }
    });
}

void find_patterns(Input& input) {
    const auto rows = input.between<uint16_t>(0, 20), columns = input.between<uint16_t>(0, 20);
    const unsigned factor = input.ConsumeBool() ? 1 : 0x01010101U;
    const unsigned whole = lbp_pyr_get_dim(rows, columns, input.between<uint16_t>(0, 5));
    // Not only whole levels, also more slots than the picture has.
    const unsigned slots = input.ConsumeBool() ? whole : input.between(0U, whole + 600);
    const int kind = input.between(0, 4);
    const auto walked = kind == 0   ? walk<char, lbp_pyr_features>
                        : kind == 1 ? walk<unsigned, lbp_pyr_features_sparse>
                        : kind == 2 ? walk<double, lbp_pyr_dotprod>
                        : kind == 3 ? walk<long, lbp_pyr_addvec>
                                    : walk<long, lbp_pyr_subvec>;
    walked(input.bytes(size_t{rows} * columns), factor, kind == 1 ? slots / 256 : slots, rows, columns);
}

}  // namespace

void fuzz(Input& input) {
    input.ConsumeBool() ? find_corners(input) : find_patterns(input);
}
