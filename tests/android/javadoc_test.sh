#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The documentation of all packaged classes is complete: a missing or broken comment fails.
# usage: javadoc_test.sh SOURCE_DIR BUILD_DIR JDK_HOME
set -euo pipefail
source=$1
build=$2
jdk=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mapfile -t files < <(find "$source/java/com" "$source/java/korvane/effects" -name '*.java')
"$jdk/bin/javadoc" -quiet -Xdoclint:all -Werror -protected -classpath "$build/java/korvane_standins.jar" \
    -d "$work/pages" "${files[@]}"
