#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs the tests of a build with coverage counters and shows the share of lines that they reach, folder by folder. The
# lines themselves are in OUT_DIR/html. The consumer test is left out: it builds a library of its own.
# usage: tools/gate/coverage.sh BUILD_DIR OUT_DIR [ctest arguments]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
build=$1
out=$2
shift 2
rm -rf "$out"
mkdir -p "$out"
# %4m: up to four files for each program, into which its runs add themselves up. %c: at once, since the server and what is
# interrupted end by a signal.
failed=0
export LLVM_PROFILE_FILE=$PWD/$out/%c%4m.profraw
ctest --test-dir "$build" --parallel "$(nproc)" --output-on-failure -LE '^proof$' -E consumer_test "$@" || failed=$?
llvm-profdata-14 merge -sparse -o "$out/all.profdata" "$out"/*.profraw

mapfile -t programs < <(find "$build/tests" "$build/tools" -type f -executable ! -name '*.so' ! -path '*/CMakeFiles/*' \
    ! -path '*/consumer/*')
objects=("$build/libkorvane.so")
for program in "${programs[@]}"; do
    objects+=(-object "$program")
done
# Paths of sources come from the build folder, those of headers from the root.
ours=(-ignore-filename-regex="(/\.\.|^$PWD|/$build)/(tests|benchmarks)/|^/usr/")
llvm-cov-14 show -format=html -output-dir="$out/html" -instr-profile="$out/all.profdata" "${ours[@]}" "${objects[@]}"
llvm-cov-14 export -summary-only -instr-profile="$out/all.profdata" "${ours[@]}" "${objects[@]}" >"$out/summary.json"
python3 - "$out/summary.json" <<'PYTHON'
import collections, json, os, sys

folders = collections.defaultdict(lambda: [0, 0])
for file in json.load(open(sys.argv[1]))["data"][0]["files"]:
    folder = os.path.dirname(os.path.relpath(file["filename"]))
    for name in (folder, "all"):
        folders[name][0] += file["summary"]["lines"]["covered"]
        folders[name][1] += file["summary"]["lines"]["count"]
print(f"{'folder':<34}{'reached':>8}{'lines':>8}{'share':>9}")
for name in sorted(folders, key=lambda name: (name == "all", name)):
    reached, lines = folders[name]
    if lines == 0:
        continue
    print(f"{name:<34}{reached:>8}{lines:>8}{100 * reached / lines:>8.1f}%")
PYTHON
echo "$out/html/index.html"
# The shares of a failed run are shown, and it stays failed.
exit $failed
