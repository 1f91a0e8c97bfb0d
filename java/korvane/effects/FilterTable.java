// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

import java.util.ArrayList;
import java.util.Collections;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/** The library's filters and their parameters, read once. */
final class FilterTable {
    private static final Map<String, FilterTable> FILTERS = read();

    final String name;
    final String summary;
    final List<FilterParameter> parameters;

    private FilterTable(String name, String summary, List<FilterParameter> parameters) {
        this.name = name;
        this.summary = summary;
        this.parameters = Collections.unmodifiableList(parameters);
    }

    static List<String> names() {
        return Collections.unmodifiableList(new ArrayList<>(FILTERS.keySet()));
    }

    static FilterTable of(String filter) {
        FilterTable table = FILTERS.get(Checks.notNull(filter, "name"));
        if (table == null) {
            throw new IllegalArgumentException("there is no filter \"" + filter + "\"; there are " + FILTERS.keySet());
        }
        return table;
    }

    FilterParameter parameter(String parameter) {
        Checks.notNull(parameter, "parameter");
        List<String> known = new ArrayList<>();
        for (FilterParameter one : parameters) {
            if (one.name().equals(parameter)) {
                return one;
            }
            known.add(one.name());
        }
        throw new IllegalArgumentException(name + " has no parameter \"" + parameter + "\"; it has " + known);
    }

    private static Map<String, FilterTable> read() {
        Map<String, FilterTable> filters = new LinkedHashMap<>();
        List<FilterParameter> parameters = null;
        for (String line : Natives.filterTable().split("\n")) {
            String[] fields = line.split("\t", -1);
            if (fields[0].equals("filter")) {
                parameters = new ArrayList<>();
                filters.put(fields[1], new FilterTable(fields[1], fields[2], parameters));
                continue;
            }
            FilterParameter parameter = FilterParameter.fromTable(fields);
            if (parameter != null) {
                parameters.add(parameter);
            }
        }
        return filters;
    }
}
