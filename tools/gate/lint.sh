#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs the static checks over the given sources, or over all: clang-tidy (.clang-tidy says what it looks for), then the
# includes.
# usage: tools/gate/lint.sh BUILD_DIR [FILE.cpp...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
build=$1
shift
# What the gallery's calls stand in is compiled with them.
mapfile -t files < <(git ls-files '*.cpp' | grep -v '^benchmarks/\|^tests/fuzz/\|^tools/bench/snippets.cpp$')
[ $# -gt 0 ] && files=("$@")
status=0
tools/gate/tidy.py "$build" "${files[@]}" || status=1
tools/gate/includes.py "$build" || status=1
exit $status
