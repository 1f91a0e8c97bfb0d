// SPDX-License-Identifier: Apache-2.0
// Texts, frame sizes and ratio types of the timestamp: the strip and the stamped frame beside those of a plain model.
#include <string>

#include "applications/photo_timestamp/timestamp_watermark.h"
#include "frameworks/core/memory.h"
#include "tests/applications/photo_timestamp/timestamp_model.h"
#include "tests/fuzz/fuzz.h"

namespace {

void lay_out(Input& input, const std::string& text) {
    const int ratioType = input.hostile(2);
    const Strip strip = model_strip(text, ratioType);
    unsigned char* watermark = nullptr;
    int width = 7, height = 7;
    CreateTimestampWatermark(text.c_str(), &watermark, &width, &height, ratioType);
    REQUIRE(width == strip.width && height == strip.height && (watermark == nullptr) == strip.coverage.empty());
    REQUIRE(std::equal(strip.coverage.begin(), strip.coverage.end(), watermark));
    galloc_free(watermark);
}

void stamp(Input& input, const std::string& text) {
    const int width = input.hostile(200), height = input.hostile(120);
    const bool isFrame = width > 0 && height > 0;
    if (isFrame && int64_t{width} * height > 100'000) {
        return;
    }
    Bytes frame = input.bytes(isFrame ? static_cast<size_t>(width * height * 2) : 2);
    Bytes expected(frame);
    const bool isDone = isFrame && !model_strip(text, 0).coverage.empty();
    if (isDone) {
        model_stamp(expected, width, height, text);
    }
    REQUIRE(make_photo_timestamp_watermark_to_yuyv(frame.data(), width, height, text.c_str(), 0) == isDone);
    REQUIRE(frame == expected);
}

void draw_symbol(Input& input) {
    const int width = input.between(0, 120), height = input.between(0, 40);
    Symbol* symbol = GetTimestampSymbol_16_to_9(input.PickValueInArray({'0', ':', '-', ' ', 'x'}));
    Bytes image = Input::buffer(static_cast<size_t>(width) * static_cast<size_t>(height));
    DrawSymbol(image.data(), width, height, symbol, input.hostile(120), input.hostile(40), input.hostile(150),
               input.hostile(120));
}

}  // namespace

void fuzz(Input& input) {
    std::string text;
    for (int length = input.one_in(8) ? 20 : input.between(0, 3); length > 0; --length) {
        const auto any = input.between<unsigned char>(1, 255);
        text += any > 20 ? "0123456789:- "[any % 13] : static_cast<char>(any + 40);
    }
    const int kind = input.between(0, 2);
    kind == 0 ? draw_symbol(input) : kind == 1 ? lay_out(input, text) : stamp(input, text);
}
