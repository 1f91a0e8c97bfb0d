#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The pages in a real browser: makes the gallery of a build, compiles the calls that it shows, and runs every *.test.mjs
# here. Called by ./dev browser. usage: tests/browser/run.sh BUILD_DIR [arguments of node --test]
set -euo pipefail
build=$(cd "$1" && pwd)
shift
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
out=$root/out/browser
mkdir -p "$out"

tools=$root/tools/bench
bench=()
[ ! -f "$root/out/bench.json" ] || bench=(--bench "$root/out/bench.json")
"$tools/gallery.py" "$build" "$out/gallery" "${bench[@]}"

# What the page offers to paste must compile.
"$tools/gallery.py" "$build" "$out/gallery" --snippets "$out/calls"
clang++ -std=c++20 -Wall -Werror -Wno-unused-variable -fsyntax-only -I"$root" -I"$build/generated" "$out/calls/snippets.cpp"
javac -d "$out/calls/classes" -cp "$build/java/korvane.jar:$build/java/korvane_standins.jar" "$out/calls/Snippets.java"

cd "$here"
if ! cmp -s package-lock.json node_modules/.installed; then
    npm ci --ignore-scripts --no-audit --no-fund --silent
    cp package-lock.json node_modules/.installed
fi
export KORVANE_ROOT=$root KORVANE_BUILD=$build KORVANE_GALLERY=$out/gallery KORVANE_SCREENSHOTS=$out/screenshots
node --test "$@" ./*.test.mjs
