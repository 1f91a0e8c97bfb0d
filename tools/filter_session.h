// SPDX-License-Identifier: Apache-2.0
// What the filter commands and the playground share: filters by their name, kept ready on this thread's context.
#ifndef KORVANE_TOOLS_FILTER_SESSION_H_
#define KORVANE_TOOLS_FILTER_SESSION_H_

#include <string>

#include "applications/filters/filter_description.h"
#include "applications/filters/gpu_image_filter_base.h"

namespace korvane {

// Milliseconds that the parts of an effect's work took. What does not run on the GPU counts as drawing.
struct DrawTimes {
    double upload = 0;
    double draw = 0;
    double read = 0;
};

// This thread's filter of that name, by its full name or without the "ImageFilter" before it, in any case; all its
// values are the defaults. It is kept until the thread ends, since making one takes longer than most photos. Throws
// CommandError for an unknown name and where the driver gives no context.
ImageFilterBaseGL& ready_filter(const std::string& name);

// Filters RGBA pixels in place, and adds to `times`. Throws CommandError for a photo that is larger than the driver's
// textures.
void draw_filter(ImageFilterBaseGL& filter, unsigned char* pixels, int width, int height, DrawTimes& times);

// Stores the parameter named in `setting`, "key=value" with commas between several values. Throws CommandError for an
// unknown key and for a value that cannot be read or is not within the range of the parameter.
void set_filter_parameter(ImageFilterBaseGL& filter, const FilterDescription& description, const std::string& setting);

// The name as one types it: "distorted" for ImageFilterDistorted.
std::string short_filter_name(const FilterDescription& description);

const FilterDescription& describe_filter(const std::string& name);

}  // namespace korvane

#endif  // KORVANE_TOOLS_FILTER_SESSION_H_
