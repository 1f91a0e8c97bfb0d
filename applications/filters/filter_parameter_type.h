// SPDX-License-Identifier: Apache-2.0
// The types of filter parameters: they say which typed setter of the Java class fits a parameter's name. Names and
// values are fixed by the interface.
#ifndef KORVANE_APPLICATIONS_FILTERS_FILTER_PARAMETER_TYPE_H_
#define KORVANE_APPLICATIONS_FILTERS_FILTER_PARAMETER_TYPE_H_

enum FilterParameterType {
    PARAMETER_TYPE_INVALID = 0,  // no such parameter
    PARAMETER_TYPE_BOOLEAN = 1,
    PARAMETER_TYPE_BOOLEAN_ARRAY = 2,
    PARAMETER_TYPE_INT = 3,
    PARAMETER_TYPE_INT_ARRAY = 4,
    PARAMETER_TYPE_FLOAT = 5,
    PARAMETER_TYPE_FLOAT_ARRAY = 6,
    PARAMETER_TYPE_DOUBLE = 7,
    PARAMETER_TYPE_DOUBLE_ARRAY = 8,
    PARAMETER_TYPE_LONG = 9,
    PARAMETER_TYPE_BITMAP = 10,
};

// A pixel buffer on its way to a filter. Not owned.
struct FilterBitmap {
    unsigned char* buffer;  // first byte of the pixels
    int width;              // pixels a row
    int height;             // rows
    int depth;              // bytes a pixel: 3 for RGB, 4 for RGBA
    int stride;             // bytes from one row to the next
};

#endif  // KORVANE_APPLICATIONS_FILTERS_FILTER_PARAMETER_TYPE_H_
