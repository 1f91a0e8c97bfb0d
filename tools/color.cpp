#include "tools/color.h"

#include <charconv>

#include "tools/command.h"

namespace korvane {

RgbColor parse_color(const std::string& text) {
    const size_t start = text.starts_with('#') ? 1 : 0;
    int value = 0;
    const char* const end = text.data() + text.size();
    // from_chars would accept a minus sign.
    const bool digits = text.size() == start + 6 && text[start] != '-';
    const auto [stop, error] = std::from_chars(text.data() + start, end, value, 16);
    if (!digits || error != std::errc() || stop != end) {
        throw CommandError("'" + text + "' is not a colour: write it as #RRGGBB");
    }
    return {value >> 16, (value >> 8) & 255, value & 255};
}

}  // namespace korvane
