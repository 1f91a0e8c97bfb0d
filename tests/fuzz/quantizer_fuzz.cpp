// SPDX-License-Identifier: Apache-2.0
// The color quantizer's calls in any order, with any colors and counts: what each palette may be, and equal palettes on
// every instruction set.
#include "applications/gif_maker/color_quantizer.h"
#include "tests/fuzz/fuzz.h"

namespace {

struct Call {
    int kind;  // 0 prepare, 1 addColor, 2 getPalette, 3 release
    int a, b, c;
};

std::vector<std::vector<int>> play(const std::vector<Call>& calls) {
    ColorQuantizer quantizer;
    std::vector<std::vector<int>> result;
    bool isPrepared = false;
    int64_t pixels = 0, room = 0;
    for (const Call& call : calls) {
        if (call.kind == 0) {
            quantizer.prepare(call.a, call.b);
            room = int64_t{call.a} * call.b;
            isPrepared = call.a >= 0 && call.b >= 0 && room <= INT32_MAX;
            pixels = 0;
        } else if (call.kind == 1) {
            quantizer.addColor(call.a, call.b, call.c);
            pixels += pixels < room ? 1 : 0;
        } else if (call.kind == 2) {
            std::vector<Color>& palette = quantizer.getPalette(call.a);
            REQUIRE(palette.empty() == (!isPrepared || call.a < 1) && palette.size() <= size_t{512});
            REQUIRE(palette.empty() || palette.size() <= static_cast<size_t>(pixels == 0 ? 1 : call.a));
            for (const Color& color : palette) {
                result.push_back({color.red, color.green, color.blue, color.alpha});
                const auto [least, most] = std::minmax({color.red, color.green, color.blue});
                REQUIRE(least >= 0 && most <= (pixels == 0 ? 0 : 255) && color.alpha == 255);
            }
            // Asking for no colors spends nothing.
            isPrepared = isPrepared && call.a < 1;
        } else {
            quantizer.release();
            isPrepared = false;
        }
    }
    return result;
}

}  // namespace

void fuzz(Input& input) {
    std::vector<Call> calls;
    for (int rounds = input.between(1, 2); rounds > 0; --rounds) {
        Call prepare = {0, input.hostile(40), input.hostile(9), 0};
        // Between what is quick and what is refused lies what takes gigabytes.
        const int64_t pixels = int64_t{prepare.a} * prepare.b;
        prepare.a = pixels > 4096 && pixels <= INT32_MAX ? 5 : prepare.a;
        prepare.b = pixels > 4096 && pixels <= INT32_MAX ? 7 : prepare.b;
        calls.push_back(prepare);
        for (int colors = input.between(0, 360); colors > 0 && input.remaining_bytes() > 0; --colors) {
            calls.push_back({1, input.hostile(255), input.hostile(255), input.hostile(255)});
        }
        for (int others = input.between(0, 3); others > 0; --others) {
            calls.push_back({input.between(1, 3), input.hostile(520), 7, 250});
        }
        calls.push_back({2, input.hostile(24), 0, 0});
    }
    on_every_target([&] { return play(calls); });
}
