// The walk over an LBP pyramid that the plain and the vector form share. Internal.
#ifndef KORVANE_ALGORITHMS_LBP_WALK_H_
#define KORVANE_ALGORITHMS_LBP_WALK_H_

#include <algorithm>
#include <cstddef>

namespace korvane {

constexpr size_t kLbpSlotsPerPosition = 256;

// One level of a pyramid in place: `rows` x `cols` values, columns `stride` elements apart.
struct LbpLevel {
    unsigned int* img;
    size_t stride;
    size_t rows;
    size_t cols;
};

// Visits the inner pixels in feature order until `limit` positions are done or a level has none.
// visit_column(centre, count, position): `count` pixels down from `centre`, the first being the position-th of the
// walk. halve(level): sums the level's 2 x 2 blocks in place; the sizes are halved here.
template <typename VisitColumn, typename Halve>
void lbp_walk(LbpLevel level, size_t limit, VisitColumn&& visit_column, Halve&& halve) {
    if (level.img == nullptr) {
        return;
    }
    size_t position = 0;
    while (position < limit && level.rows >= 3 && level.cols >= 3) {
        for (size_t c = 1; c + 1 < level.cols && position < limit; ++c) {
            const size_t count = std::min(level.rows - 2, limit - position);
            visit_column(level.img + c * level.stride + 1, count, position);
            position += count;
        }
        if (position < limit) {
            halve(level);
            level.rows /= 2;
            level.cols /= 2;
        }
    }
}

// How many positions have a slot below `slots`.
inline size_t lbp_positions_for(unsigned int slots) {
    return (slots + kLbpSlotsPerPosition - 1) / kLbpSlotsPerPosition;
}

// The actions on a slot. Integer steps are taken unsigned, where overflow is defined.
struct LbpCount {
    char* vec;
    void operator()(size_t slot) const { vec[slot] = static_cast<char>(vec[slot] + 1); }
};
struct LbpSum {
    const double* vec;
    double* sum;
    void operator()(size_t slot) const { *sum += vec[slot]; }
};
struct LbpStep {
    long* vec;
    unsigned long step;
    void operator()(size_t slot) const { vec[slot] = static_cast<long>(static_cast<unsigned long>(vec[slot]) + step); }
};

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_LBP_WALK_H_
