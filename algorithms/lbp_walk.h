// SPDX-License-Identifier: Apache-2.0
// The walk over an LBP pyramid that the kernel and its twin share. Internal.
#ifndef KORVANE_ALGORITHMS_LBP_WALK_H_
#define KORVANE_ALGORITHMS_LBP_WALK_H_

#include <algorithm>
#include <cstddef>

namespace korvane {

constexpr size_t kLbpSlotsPerPosition = 256;
constexpr size_t kLbpColumnsAtOnce = 8;

// One level of a pyramid in place: `rows` x `cols` values, columns `stride` elements apart.
struct LbpLevel {
    unsigned int* img;
    size_t stride;
    size_t rows;
    size_t cols;
};

// Visits the inner pixels in feature order until `limit` positions are done or a level has none.
// visit(centre, columns, count, position): `columns` columns of `count` pixels down from `centre`, the first pixel
// being the position-th of the walk. All of a level's columns but the last few come in groups of kLbpColumnsAtOnce.
// halve(level, x): column x of the next level from columns 2x and 2x + 1 of this one, in place. It follows as close
// upon the visits as it can, while these columns are still in the cache.
template <typename Visit, typename Halve>
void lbp_walk(LbpLevel level, size_t limit, Visit&& visit, Halve&& halve) {
    size_t position = 0;
    while (position < limit && level.rows >= 3 && level.cols >= 3) {
        const size_t inner = level.rows - 2;
        const bool isLast = limit - position <= inner * (level.cols - 2);
        size_t halved = 0;
        for (size_t c = 1; c + 1 < level.cols && position < limit;) {
            const bool isGroup = c + kLbpColumnsAtOnce < level.cols && limit - position >= inner * kLbpColumnsAtOnce;
            const size_t columns = isGroup ? kLbpColumnsAtOnce : 1;
            const size_t count = std::min(inner, limit - position);
            visit(level.img + c * level.stride + 1, columns, count, position);
            position += count * columns;
            c += columns;
            // What is overwritten, column `halved`, lies left of everything still to be visited and its neighbours.
            for (; !isLast && 2 * halved + 1 < c; ++halved) {
                halve(level, halved);
            }
        }
        for (; !isLast && halved < level.cols / 2; ++halved) {
            halve(level, halved);
        }
        level.rows /= 2;
        level.cols /= 2;
    }
}

// How many positions have a slot below `slots`.
inline size_t lbp_positions_for(unsigned int slots) {
    return (size_t{slots} + kLbpSlotsPerPosition - 1) / kLbpSlotsPerPosition;
}

// The actions on a slot. Integer steps are taken unsigned, where overflow is defined. fetch() asks for the slot's cache
// line ahead of time.
struct LbpCount {
    char* vec;
    void operator()(size_t slot) const { vec[slot] = static_cast<char>(vec[slot] + 1); }
    void fetch(size_t slot) const { __builtin_prefetch(vec + slot, 1, 3); }
};
struct LbpSum {
    const double* vec;
    double* sum;
    void operator()(size_t slot) const { *sum += vec[slot]; }
    void fetch(size_t slot) const { __builtin_prefetch(vec + slot, 0, 3); }
};
struct LbpStep {
    long* vec;
    unsigned long step;
    void operator()(size_t slot) const { vec[slot] = static_cast<long>(static_cast<unsigned long>(vec[slot]) + step); }
    void fetch(size_t slot) const { __builtin_prefetch(vec + slot, 1, 3); }
};

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_LBP_WALK_H_
