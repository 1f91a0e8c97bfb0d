// SPDX-License-Identifier: Apache-2.0
// The filters and their parameters as a text, for a reader in another language.
#ifndef KORVANE_APPLICATIONS_EFFECTS_EFFECTS_FILTER_TABLE_H_
#define KORVANE_APPLICATIONS_EFFECTS_EFFECTS_FILTER_TABLE_H_

#include <optional>
#include <string>

#include "applications/filters/filter_description.h"

namespace korvane {

// What a caller sets to get what the filter starts with; nothing for what is no single float. Throws std::bad_alloc.
std::optional<float> filter_default(const FilterDescription& filter, const FilterParameter& parameter);

// One line a filter ("filter", name, summary), under it one a parameter ("parameter", name, number of the type, count,
// range, default or nothing, summary), fields parted by tabs. Setting a parameter to its default changes nothing.
// Throws std::bad_alloc.
std::string filter_table();

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_EFFECTS_EFFECTS_FILTER_TABLE_H_
