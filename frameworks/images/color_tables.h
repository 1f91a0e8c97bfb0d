// SPDX-License-Identifier: Apache-2.0
// The coefficients of the color conversions: BT.601 in studio range, in tables of whole numbers.
//
// Entry i is coefficient x (i - offset), truncated toward zero. The products are formed in thousandths, where they are
// exact; single and double precision truncate to the same entries. Source: ITU-R BT.601, with three decimals.
#ifndef KORVANE_FRAMEWORKS_IMAGES_COLOR_TABLES_H_
#define KORVANE_FRAMEWORKS_IMAGES_COLOR_TABLES_H_

#include <array>
#include <cstddef>
#include <cstdint>

using ColorTable = std::array<int32_t, 256>;

constexpr ColorTable make_color_table(int32_t thousandths, int32_t offset) {
    ColorTable table{};
    for (int32_t i = 0; i < 256; ++i) {
        table[static_cast<size_t>(i)] = thousandths * (i - offset) / 1000;
    }
    return table;
}

inline constexpr ColorTable gRGB2Y_RTable = make_color_table(257, 0);
inline constexpr ColorTable gRGB2Y_GTable = make_color_table(504, 0);
inline constexpr ColorTable gRGB2Y_BTable = make_color_table(98, 0);
inline constexpr ColorTable gRGB2U_RTable = make_color_table(-148, 0);
inline constexpr ColorTable gRGB2U_GTable = make_color_table(-291, 0);
// Also the blue term of U: the two coefficients are the same.
inline constexpr ColorTable gRGB2V_RTable = make_color_table(439, 0);
inline constexpr ColorTable gRGB2V_GTable = make_color_table(-368, 0);
inline constexpr ColorTable gRGB2V_BTable = make_color_table(-71, 0);
inline constexpr ColorTable gYUV2RGB_YTable = make_color_table(1164, 16);
inline constexpr ColorTable gYUV2R_VTable = make_color_table(1596, 128);
inline constexpr ColorTable gYUV2G_VTable = make_color_table(813, 128);
inline constexpr ColorTable gYUV2G_UTable = make_color_table(391, 128);
inline constexpr ColorTable gYUV2B_UTable = make_color_table(2018, 128);

#endif  // KORVANE_FRAMEWORKS_IMAGES_COLOR_TABLES_H_
