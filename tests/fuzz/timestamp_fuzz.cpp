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

// Where nothing covers a pixel it stays; where full coverage does, it is nearly white.
void require_stamp(const Bytes& before, const Bytes& after, int64_t width, int64_t height, const std::string& text) {
    const int64_t longSide = std::max(width, height), shortSide = std::min(width, height);
    const bool isWide = std::abs(longSide * 100 / shortSide - 177) < 5;
    const Bytes columns = columns_of(text, isWide ? 1 : 0);
    const int64_t rows = isWide ? 108 : 160, stripWidth = (static_cast<int64_t>(columns.size()) / rows + 1) / 2 * 2;
    const int64_t w = (stripWidth * longSide / (isWide ? 4608 : 5248) + 1) / 2 * 2;
    const int64_t h = rows * shortSide / (isWide ? 2592 : 3936);
    const int64_t x0 = (width - (isWide ? 150 * longSide / 4608 : 200 * longSide / 5248) - 1 - w) / 2 * 2;
    const int64_t y0 = height - 1 - (isWide ? 150 * shortSide / 2592 : 200 * shortSide / 3936) - h;
    const bool fits = w > 0 && h > 0 && x0 >= 0 && y0 >= 0 && x0 + w < width && y0 + h < height;
    if (!fits) {
        REQUIRE(after == before);
        return;
    }
    const float fx = static_cast<float>(stripWidth) / static_cast<float>(w);
    const float fy = static_cast<float>(rows) / static_cast<float>(h);
    for (int64_t i = 0; i < width * height; ++i) {
        const int64_t x = i % width - x0, y = i / width - y0;
        const auto column = static_cast<int64_t>(static_cast<float>(x) * fx);
        const auto row = static_cast<int64_t>(static_cast<float>(y) * fy);
        const auto place = static_cast<size_t>(column * rows + std::min(row, rows - 1));
        const bool isInside = x >= 0 && x < w && y >= 0 && y < h && place < columns.size();
        const int coverage = isInside ? columns[place] : 0;
        const auto byte = static_cast<size_t>(i) * 2;
        REQUIRE(coverage > 0 || (after[byte] == before[byte] && after[byte + 1] == before[byte + 1]));
        REQUIRE(coverage < 255 || after[byte] == 233 * 255 >> 8);
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
    if (isDone) {
        require_stamp(frame, stamped, width, height, text);
    } else {
        REQUIRE(stamped == frame);
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
