// SPDX-License-Identifier: Apache-2.0
// The files of the playground's page, which the program carries inside itself.
#ifndef KORVANE_TOOLS_BENCH_PAGE_FILES_H_
#define KORVANE_TOOLS_BENCH_PAGE_FILES_H_

#include <span>
#include <string_view>

namespace korvane {

struct PageFile {
    std::string_view name;
    std::string_view text;
};

std::span<const PageFile> page_files();

// The whole of docs/known-behaviours.md, which goes with them.
std::string_view known_behaviours_text();

}  // namespace korvane

#endif  // KORVANE_TOOLS_BENCH_PAGE_FILES_H_
