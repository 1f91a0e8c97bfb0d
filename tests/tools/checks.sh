# SPDX-License-Identifier: Apache-2.0
# For tests of the command line program: source this with the program (and the emulator that runs it, if any) as the
# script's arguments, write rows, end with `finish`. Each script works in an empty folder of its own.
set -u
program=("$@")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
failures=0

complain() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

snapshot() { find . -mindepth 1 ! -name '*.log' -printf '%p %y %l\n' -type f -exec cksum {} \; | sort; }

run() {
    local code=0
    "${program[@]}" "$@" >"$folder/out.log" 2>"$folder/err.log" || code=$?
    # To name a lock that tests/tsan.supp knows, the thread sanitizer's symbolizer looks for a file called "[stack]".
    [ -z "${TSAN_OPTIONS:-}" ] || sed -i '/^LLVMSymbolizer: error reading file: No such file/d' "$folder/err.log"
    return $code
}

# accepts ARGUMENTS...: exit code 0 and nothing on standard error.
accepts() {
    run "$@" || complain "$*: exit code $?, $(cat "$folder/err.log")"
    [ ! -s "$folder/err.log" ] || complain "$*: said $(cat "$folder/err.log")"
}

# refuses PATTERN ARGUMENTS...: exit code 2, nothing on standard output, one line on standard error that the extended
# regular expression matches behind the program's name, and every file in the folder as it was.
refuses() {
    local pattern=$1 before code
    shift
    before=$(snapshot)
    run "$@"
    code=$?
    [ $code = 2 ] || complain "$*: exit code $code instead of 2"
    [ ! -s "$folder/out.log" ] || complain "$*: wrote to standard output"
    [ "$(wc -l <"$folder/err.log")" = 1 ] || complain "$*: $(wc -l <"$folder/err.log") lines on standard error"
    grep -qE "^korvane: .*$pattern" "$folder/err.log" || complain "$*: said $(cat "$folder/err.log")"
    [ "$(snapshot)" = "$before" ] || complain "$*: changed the folder"
}

holds() { "$@" || complain "$*"; }

finish() {
    [ $failures = 0 ] && exit 0
    echo "$failures checks failed"
    exit 1
}
