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

struct Patterns {
    unsigned short rows;
    unsigned short columns;
    std::vector<unsigned> image;

    template <typename T, typename Feature>
    void walk(unsigned count, const Feature& feature) const {
        on_every_target([&] {
            std::vector<unsigned> levels(image);
            levels.reserve(1);
            std::vector<T> vec(count);
            vec.reserve(1);
            for (unsigned i = 0; i < count; ++i) {
                vec[i] = static_cast<T>(1.0 / (i + 1));
            }
            if constexpr (std::is_same_v<T, double>) {
                return feature(vec.data(), count, levels.data(), rows, columns);
            } else {
                feature(vec.data(), count, levels.data(), rows, columns);
                return vec;
            }
        });
    }
};

void find_patterns(Input& input) {
    Patterns patterns = {input.between<uint16_t>(0, 20), input.between<uint16_t>(0, 20), {}};
    const unsigned factor = input.ConsumeBool() ? 1 : 0x01010101U;
    const unsigned whole = lbp_pyr_get_dim(patterns.rows, patterns.columns, input.between<uint16_t>(0, 5));
    // Not only whole levels, also more slots than the picture has.
    const unsigned slots = input.ConsumeBool() ? whole : input.between(0U, whole + 600);
    const int kind = input.between(0, 4);
    for (const unsigned char level : input.bytes(size_t{patterns.rows} * patterns.columns)) {
        patterns.image.push_back(level * factor);
    }
    kind == 0   ? patterns.walk<char>(slots, lbp_pyr_features)
    : kind == 1 ? patterns.walk<unsigned>(slots / 256, lbp_pyr_features_sparse)
    : kind == 2 ? patterns.walk<double>(slots, lbp_pyr_dotprod)
    : kind == 3 ? patterns.walk<long>(slots, lbp_pyr_addvec)
                : patterns.walk<long>(slots, lbp_pyr_subvec);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    input.ConsumeBool() ? find_corners(input) : find_patterns(input);
    return 0;
}
