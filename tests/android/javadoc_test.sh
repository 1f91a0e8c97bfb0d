#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The documentation of all packaged classes is complete: a missing or broken comment fails.
# usage: javadoc_test.sh SOURCE_DIR BUILD_DIR JDK_HOME
# shellcheck source=tests/android/set_up.sh
. "$(dirname "${BASH_SOURCE[0]}")/set_up.sh"
mapfile -t files < <(find "$source/java/com" "$source/java/korvane/effects" -name '*.java')
javadoc -quiet -Xdoclint:all -Werror -protected -classpath "$build/java/korvane_standins.jar" \
    -d "$work/pages" "${files[@]}"
