// SPDX-License-Identifier: Apache-2.0
// Texts, frame sizes and ratio types of the timestamp: the strip beside one put together from the glyphs, and a stamp
// that changes what lies under it only.
#include <memory>
#include <string>

#include "applications/photo_timestamp/timestamp_watermark.h"
#include "frameworks/core/memory.h"
#include "tests/fuzz/fuzz.h"

namespace {

using Strip = std::unique_ptr<unsigned char, decltype(&galloc_free)>;

// Column by column; none when the text has no strip.
Bytes columns_of(const std::string& text, int ratioType) {
    Bytes columns;
    for (const char c : text) {
        const Symbol* glyph = ratioType == 0   ? GetTimestampSymbol_4_to_3(c)
                              : ratioType == 1 ? GetTimestampSymbol_16_to_9(c)
                                               : nullptr;
        if (glyph == nullptr) {
            return {};
        }
        for (int i = 0; i < glyph->width * glyph->height; ++i) {
            const int pixel = i % glyph->height * glyph->width + i / glyph->height;
            columns.push_back(static_cast<unsigned char>(glyph->data == nullptr ? 0 : 255 - glyph->data[pixel]));
        }
    }
    return columns;
}

void require_strip(const std::string& text, int ratioType) {
    unsigned char* watermark = nullptr;
    int width = 7, height = 7;
    CreateTimestampWatermark(text.c_str(), &watermark, &width, &height, ratioType);
    const Strip owner(watermark, &galloc_free);
    const Bytes columns = columns_of(text, ratioType);
    REQUIRE((watermark != nullptr) == !columns.empty() && (watermark != nullptr || width + height == 0));
    for (size_t i = 0; i < columns.size(); ++i) {
        const auto rows = static_cast<size_t>(height);
        REQUIRE(watermark[i % rows * static_cast<size_t>(width) + i / rows] == columns[i]);
    }
}

void stamp(Input& input, const std::string& text) {
    const int width = input.hostile(200), height = input.hostile(120);
    if (width > 0 && height > 0 && int64_t{width} * height > 100'000) {
        return;
    }
    const Bytes frame = input.bytes(width < 1 || height < 1 ? 2 : static_cast<size_t>(width * height * 2));
    Bytes stamped(frame);
    const bool isDone = make_photo_timestamp_watermark_to_yuyv(stamped.data(), width, height, text.c_str(), 0);
    REQUIRE(isDone == (width > 0 && height > 0 && !columns_of(text, 0).empty()));
    const int64_t longSide = std::max(width, height), shortSide = std::min(width, height);
    const bool isWide = isDone && std::abs(longSide * 100 / shortSide - 177) < 5;
    const int64_t right = isWide ? 150 * longSide / 4608 : 200 * longSide / 5248;
    const int64_t bottom = isWide ? 150 * shortSide / 2592 : 200 * shortSide / 3936;
    for (size_t i = 0; i < frame.size(); ++i) {
        const int x = static_cast<int>(i / 2) % std::max(width, 1), y = static_cast<int>(i / 2) / std::max(width, 1);
        REQUIRE(stamped[i] == frame[i] || (isDone && x < width - right - 1 && y < height - bottom - 1));
    }
}

void draw_symbol(Input& input) {
    const int width = input.between(0, 120), height = input.between(0, 40);
    Symbol* symbol = GetTimestampSymbol_16_to_9(input.PickValueInArray({'0', ':', '-', ' ', 'x'}));
    Bytes image = Input::buffer(static_cast<size_t>(width) * static_cast<size_t>(height));
    DrawSymbol(image.data(), width, height, symbol, input.hostile(120), input.hostile(40), input.hostile(150),
               input.hostile(120));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    std::string text;
    for (int length = input.one_in(8) ? 20 : input.between(0, 3); length > 0; --length) {
        const auto any = input.between<unsigned char>(1, 255);
        text += any > 20 ? "0123456789:- "[any % 13] : static_cast<char>(any + 40);
    }
    const int kind = input.between(0, 2);
    kind == 0 ? draw_symbol(input) : kind == 1 ? require_strip(text, input.hostile(2)) : stamp(input, text);
    return 0;
}
