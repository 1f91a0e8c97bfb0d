#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs the static checks over the given sources, or over all: clang-tidy (.clang-tidy says what it looks for), then the
# includes. Kernels are looked at for one instruction set, since the others are the same text. Tests do without the check
# for const, which takes half the time, and without those for speed and for products that overflow: their numbers are
# small and their own.
# usage: tools/gate/lint.sh BUILD_DIR [FILE.cpp...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
build=$1
shift
mapfile -t files < <(git ls-files '*.cpp' | grep -v '^benchmarks/\|^tests/fuzz/')
[ $# -gt 0 ] && files=("$@")
# Not yet: names. Remove this when the last ones are mended.
names=-readability-identifier-naming

tidy() {
    local checks=$1
    shift
    [ $# = 0 ] || printf '%s\0' "$@" | xargs -0 -n 2 -P "$(nproc)" clang-tidy-14 --quiet -p "$build" --checks="$checks" \
        --extra-arg=-DHWY_COMPILE_ONLY_STATIC 2> >(grep -v 'warnings generated\|warning generated' >&2)
}

mapfile -t tests < <(printf '%s\n' "${files[@]}" | grep '^tests/')
mapfile -t sources < <(printf '%s\n' "${files[@]}" | grep -v '^tests/')
tidy "$names" "${sources[@]}"
tidy "$names,-misc-const-correctness,-performance-*,-bugprone-*-widening-*" "${tests[@]}"
mapfile -t plain < <(grep -L foreach_target "${files[@]}")
[ ${#plain[@]} = 0 ] || tools/gate/includes.py "$build" "${plain[@]}"
