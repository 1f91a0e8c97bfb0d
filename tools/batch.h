// SPDX-License-Identifier: Apache-2.0
// What makes a command for one photo a command for many. See docs/batch.md.
#ifndef KORVANE_TOOLS_BATCH_H_
#define KORVANE_TOOLS_BATCH_H_

#include <functional>

#include "tools/photo/photo_io.h"

namespace korvane {

// Does the work for the one photo here, or for each of several photos, or one into a folder, in worker processes.
// `photo` is the command's own: its input and output are set before each call of `work`, which fails by throwing.
// Throws SomeFailed at the end when any failed; UsageError ends the batch at once.
void for_each_photo(PhotoOptions& photo, const std::function<void()>& work);

}  // namespace korvane

#endif  // KORVANE_TOOLS_BATCH_H_
