// SPDX-License-Identifier: Apache-2.0
// What a filter is, as data: its name, its shader, its parameters and its uniforms.
//
// A filter's class adds little to this: ImageFilterBaseGL reads the tables for it, the factory finds it by its name,
// and the command line program lists it from the same rows. See docs/adding-a-filter.md.
#ifndef KORVANE_APPLICATIONS_FILTERS_FILTER_DESCRIPTION_H_
#define KORVANE_APPLICATIONS_FILTERS_FILTER_DESCRIPTION_H_

#include <span>

#include "applications/filters/filter_parameter_type.h"

class ImageFilterBaseGL;

// A float of some filter's class, addressed through the base.
using FilterFloat = float ImageFilterBaseGL::*;

// A value that Java may set by name.
struct FilterParameter {
    const char* name;
    FilterParameterType type;
    // Stores the value at `value`, of the type above; never called with null.
    void (*store)(ImageFilterBaseGL& filter, const void* value);
    const char* range;    // shown in lists: "0 ... 1", or what the value is
    const char* summary;  // shown in lists: one line
    int count = 1;        // how many values; more than one for the array types
};

// A float that every frame sends to the shader, with the value that it starts from.
struct FilterUniform {
    const char* name;
    FilterFloat field;
    float defaultValue;
};

struct FilterDescription {
    const char* name;            // what the factory is asked for; also names the cached program
    const char* summary;         // shown in lists: one line
    const char* fragmentShader;  // the body; a header that declares tex_sampler and v_texcoord is put before it
    std::span<const FilterParameter> parameters;
    std::span<const FilterUniform> uniforms;  // in the order in which they are sent
    ImageFilterBaseGL* (*create)();           // a new filter with count 0, or null when memory is short
};

#endif  // KORVANE_APPLICATIONS_FILTERS_FILTER_DESCRIPTION_H_
