// SPDX-License-Identifier: Apache-2.0
// Colours on the command line.
#ifndef KORVANE_TOOLS_COLOR_H_
#define KORVANE_TOOLS_COLOR_H_

#include <string>

namespace korvane {

struct RgbColor {
    int red;
    int green;
    int blue;
};

// Reads "#RRGGBB" or "#RGB", also without the "#", and the color names of CSS, all in any case. Throws CommandError for
// anything else.
RgbColor parse_color(const std::string& text);

}  // namespace korvane

#endif  // KORVANE_TOOLS_COLOR_H_
