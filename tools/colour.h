// Colours on the command line.
#ifndef KORVANE_TOOLS_COLOUR_H_
#define KORVANE_TOOLS_COLOUR_H_

#include <string>

namespace korvane {

struct Colour {
    int red;
    int green;
    int blue;
};

// Reads "#RRGGBB", the number sign optional, hexadecimal digits in either case. Throws CommandError for anything else.
Colour parse_colour(const std::string& text);

}  // namespace korvane

#endif  // KORVANE_TOOLS_COLOUR_H_
