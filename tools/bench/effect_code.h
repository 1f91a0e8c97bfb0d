// SPDX-License-Identifier: Apache-2.0
// The effects as code for pasting, in the words of the library's C++ and Java interfaces. The pages and the gallery's
// maker fill them with values; a test compiles and runs what comes out.
//
// A line may begin with a condition: "alpha? " keeps it when that value is not 0 or off, "!alpha? " when it is, and
// "each? " repeats it for each value that is not the default, which is {key} and {value} then. {radius} is a value as
// it is; {radius:float} and the other kinds are in page/code.js and gallery.py. Lines of #include and import go to the
// top, each once.
#ifndef KORVANE_TOOLS_BENCH_EFFECT_CODE_H_
#define KORVANE_TOOLS_BENCH_EFFECT_CODE_H_

#include <string>

namespace korvane {

struct EffectCode {
    std::string cpp;
    std::string java;  // empty where the Java classes have no such call
};

EffectCode blur_code(const std::string& method);
EffectCode filter_code(const std::string& name);
EffectCode palette_code();
EffectCode stamp_code();
EffectCode corners_code();

}  // namespace korvane

#endif  // KORVANE_TOOLS_BENCH_EFFECT_CODE_H_
