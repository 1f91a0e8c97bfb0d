// SPDX-License-Identifier: Apache-2.0
// What a binding to another language asks of the filters: to make one that is ready to draw, and to set its values by
// name.
//
// A caller in another language may choose the wrong setter for a name, or give too few values. A filter reads as many
// bytes as the name implies, so all of these make sure that the bytes are there.
#ifndef KORVANE_APPLICATIONS_FILTERS_FILTER_CALLS_H_
#define KORVANE_APPLICATIONS_FILTERS_FILTER_CALLS_H_

#include <GLES3/gl3.h>

#include <cstddef>

#include "applications/filters/gpu_image_filter_base.h"

namespace korvane {

// A filter with an engine of its own, which is current on this thread afterwards; for process(). The caller deletes
// the filter. Null for a null or unknown name, when memory is short and when the filter cannot be set up.
ImageFilterBaseGL* create_offscreen_filter(const char* name);

// A filter for the context that is current on this thread; for render(). `target` as in setupGraphics. The rest is as
// above.
ImageFilterBaseGL* create_surface_filter(const char* name, GLenum target);

// Sets one value of `bytes` bytes. The filter sees at least 64 readable bytes, with zeros behind the value. A null
// filter, key or value sets nothing. A name that takes a bitmap is not set either: its value holds an address, and
// plain numbers must never be used as one.
void set_filter_value(ImageFilterBaseGL* filter, const char* key, void* value, size_t bytes);

// The same for an array. One that is shorter than what the name takes sets nothing.
void set_filter_array(ImageFilterBaseGL* filter, const char* key, void* values, size_t bytes);

// Sets width * height RGBA pixels, rows without gaps. Null pixels set nothing, and so does short memory.
void set_filter_bitmap(ImageFilterBaseGL* filter, const char* key, unsigned char* pixels, int width, int height);

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_FILTERS_FILTER_CALLS_H_
