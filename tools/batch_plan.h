// SPDX-License-Identifier: Apache-2.0
// Which file each photo of a batch becomes.
#ifndef KORVANE_TOOLS_BATCH_PLAN_H_
#define KORVANE_TOOLS_BATCH_PLAN_H_

#include <string>
#include <vector>

namespace korvane {

struct PlannedPhoto {
    std::string input;
    // Empty when the command only reports.
    std::string output;
};

// A photo keeps its name, and below `folder` the part of its path below the deepest folder that all photos share: a.jpg
// and b.jpg of one folder become a.jpg and b.jpg, 2025/a.jpg and 2026/a.jpg stay apart. `format`, when given, decides
// the extension. A photo given twice is done once. Throws UsageError when two photos would become one file, or one
// would overwrite another before that was read.
std::vector<PlannedPhoto> plan_batch(const std::vector<std::string>& inputs, const std::string& folder,
                                     const std::string& format);

}  // namespace korvane

#endif  // KORVANE_TOOLS_BATCH_PLAN_H_
