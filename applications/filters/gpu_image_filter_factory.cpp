// SPDX-License-Identifier: Apache-2.0
#include "applications/filters/gpu_image_filter_factory.h"

#include <cstring>

// One row a filter; each is defined in the filter's own source.
#define KORVANE_FILTERS(row) \
    row(None) row(Table) row(Distorted) row(Extrusion) row(Mirror) row(Temperature) row(Timetunnel) row(Xray)

#define KORVANE_DECLARE(filter) extern const FilterDescription kImageFilter##filter;
KORVANE_FILTERS(KORVANE_DECLARE)

namespace {

#define KORVANE_ADDRESS(filter) &kImageFilter##filter,
constexpr const FilterDescription* kFilters[] = {KORVANE_FILTERS(KORVANE_ADDRESS)};

}  // namespace

ImageFilterBaseGL* ImageFilterFactory::createFilter(const char* name) {
    if (name == nullptr) {
        return nullptr;
    }
    for (const FilterDescription* filter : kFilters) {
        if (std::strcmp(filter->name, name) == 0) {
            return filter->create();
        }
    }
    return nullptr;
}

std::span<const FilterDescription* const> ImageFilterFactory::filters() {
    return kFilters;
}
