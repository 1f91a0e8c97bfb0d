#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs the static checks over the given sources, or over all: clang-tidy (.clang-tidy says what it looks for), then the
# includes.
# usage: tools/gate/lint.sh BUILD_DIR [FILE.cpp...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
build=$1
shift
mapfile -t files < <(git ls-files '*.cpp' | grep -v '^benchmarks/\|^tests/fuzz/')
[ $# -gt 0 ] && files=("$@")
status=0

# tidy CHECKS OPTIONS FILE...
tidy() {
    local checks=$1 options=$2
    shift 2
    # shellcheck disable=SC2086
    [ $# = 0 ] || printf '%s\0' "$@" | xargs -0 -n 2 -P "$(nproc)" clang-tidy-14 --quiet -p "$build" --checks="$checks" \
        $options 2> >(grep -v 'warnings generated\|warning generated' >&2) || status=1
}

# Kernels are looked at for one instruction set, since the others are the same text. Their helpers are named as
# Highway's functions.
mapfile -t kernels < <(grep -l foreach_target "${files[@]}")
one_target=--extra-arg=-DHWY_COMPILE_ONLY_STATIC
[ "$(uname -m)" != x86_64 ] || one_target+=' --extra-arg=-march=haswell'
tidy -readability-identifier-naming "$one_target" "${kernels[@]}"

# Commands run once: a copied argument costs less there than the search for it in the headers of the option parser.
mapfile -t commands < <(grep -l CLI/CLI.hpp "${files[@]}" | grep -v ^tests/)
tidy -performance-unnecessary-value-param '' "${commands[@]}"

mapfile -t others < <(grep -L 'foreach_target\|CLI/CLI.hpp' "${files[@]}" | grep -v ^tests/)
tidy '' '' "${others[@]}"

# The numbers of tests are small and their own. They also do without the checks that take longest to read through the
# test framework's headers.
mapfile -t tests < <(grep -L foreach_target "${files[@]}" | grep ^tests/)
not_for_tests=-misc-const-correctness,-performance-*
for check in "*-widening-*" assert-side-effect forward-declaration-namespace infinite-loop multiple-statement-macro \
    stringview-nullptr suspicious-semicolon suspicious-string-compare unused-return-value use-after-move; do
    not_for_tests+=,-bugprone-$check
done
tidy "$not_for_tests" '' "${tests[@]}"

mapfile -t plain < <(grep -L foreach_target "${files[@]}")
[ ${#plain[@]} = 0 ] || tools/gate/includes.py "$build" "${plain[@]}" || status=1
exit $status
