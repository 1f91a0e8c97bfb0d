// SPDX-License-Identifier: Apache-2.0
// What the filter commands share: a filter by its name, with an off-screen context of its own.
#ifndef KORVANE_TOOLS_FILTER_SESSION_H_
#define KORVANE_TOOLS_FILTER_SESSION_H_

#include <string>

#include "applications/filters/filter_description.h"
#include "applications/filters/gpu_image_filter_base.h"
#include "frameworks/core/auto_ptr.h"

namespace korvane {

// A filter ready to process, by its full name or without the "ImageFilter" before it, in any case. Throws CommandError
// for an unknown name and where the driver gives no context.
auto_ptr<ImageFilterBaseGL> open_filter(const std::string& name);

// Stores the parameter named in `setting`, "key=value" with commas between several values. Throws CommandError for an
// unknown key and for a value that cannot be read or is not within the range of the parameter.
void set_filter_parameter(ImageFilterBaseGL& filter, const FilterDescription& description, const std::string& setting);

// The name as one types it: "distorted" for ImageFilterDistorted.
std::string short_filter_name(const FilterDescription& description);

const FilterDescription& describe_filter(const std::string& name);

}  // namespace korvane

#endif  // KORVANE_TOOLS_FILTER_SESSION_H_
