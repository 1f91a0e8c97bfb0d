// SPDX-License-Identifier: Apache-2.0
// What docs/known-behaviours.md says about an effect.
#ifndef KORVANE_TOOLS_BENCH_KNOWN_BEHAVIOURS_H_
#define KORVANE_TOOLS_BENCH_KNOWN_BEHAVIOURS_H_

#include <string>

#include "tools/json.h"

namespace korvane {

// Rows of [what happens, why callers must know, how to live with it] for one of the pages' effects ("blur-stack",
// "filter-Mirror", "merge"), with `code` marked and links as their text.
Json known_behaviours(const std::string& effect);

}  // namespace korvane

#endif  // KORVANE_TOOLS_BENCH_KNOWN_BEHAVIOURS_H_
