// SPDX-License-Identifier: Apache-2.0
// ImageFilterFactory: filters by name.
#ifndef KORVANE_APPLICATIONS_FILTERS_GPU_IMAGE_FILTER_FACTORY_H_
#define KORVANE_APPLICATIONS_FILTERS_GPU_IMAGE_FILTER_FACTORY_H_

#include <span>

#include "applications/filters/gpu_image_filter_base.h"
#include "frameworks/core/export.h"

class KORVANE_API ImageFilterFactory {
  public:
    // A new filter with count 0, owned by the caller. Null for an unknown name or null, and when memory is short. Names
    // are exact.
    static ImageFilterBaseGL* createFilter(const char* name);

    // All filters, in the order in which createFilter tries them.
    static std::span<const FilterDescription* const> filters();
};

#endif  // KORVANE_APPLICATIONS_FILTERS_GPU_IMAGE_FILTER_FACTORY_H_
