#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Breaks the library in small ways, one at a time, and looks whether the tests notice; see the list for its form.
# Works on a copy of a revision under out/mutations; the working tree is never touched.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

usage() {
    cat <<'TEXT'
usage: tools/mutate.sh [-r REVISION] [-l LIST] [NAME...]

Tries the mutations of tools/mutations.txt on REVISION (default HEAD) and prints a table. What has a result already is
not tried again; to do so, name it: a NAME is a pattern such as 'blur_*'. Ends with 1 when a mutation is missed that the
list does not mark so, or cannot be tried.
  -l LIST  another list
  -t       only the table, from the results so far
TEXT
}

revision=HEAD
list=tools/mutations.txt
table_only=
while getopts r:l:th option; do
    case $option in
    r) revision=$OPTARG ;;
    l) list=$OPTARG ;;
    t) table_only=1 ;;
    *) usage && exit 2 ;;
    esac
done
shift $((OPTIND - 1))
patterns=("$@")

# The mutations, in five arrays.
names=() files=() tests=() finds=() replacements=()
expected_misses=" "
while IFS= read -r line; do
    case $line in
    '#'* | '') ;;
    -*) finds+=("${line:1}") ;;
    +*) replacements+=("${line:1}") ;;
    *)
        read -r name file test mark <<<"$line"
        names+=("$name") files+=("$file") tests+=("$test")
        [ "$mark" != missed ] || expected_misses+="$name "
        ;;
    esac
done <"$list"
if [ ${#names[@]} -ne ${#finds[@]} ] || [ ${#names[@]} -ne ${#replacements[@]} ]; then
    echo "mutate: $list: every entry needs a line with - and one with +" >&2
    exit 2
fi

commit=$(git rev-parse --short "$revision^{commit}")
work=$PWD/out/mutations/$commit
tree=$work/tree
results=$work/results.txt
mkdir -p "$work"
touch "$results"

named() {
    local pattern
    for pattern in "${patterns[@]}"; do
        # shellcheck disable=SC2053
        [[ $1 != $pattern ]] || return 0
    done
    return 1
}

# What to try now: everything named, or else what has no result yet.
todo=()
for i in "${!names[@]}"; do
    if [ ${#patterns[@]} -gt 0 ] && ! named "${names[i]}"; then continue; fi
    if [ ${#patterns[@]} -eq 0 ] && grep -q "^${names[i]} " "$results"; then continue; fi
    todo+=("$i")
done
[ -z "$table_only" ] || todo=()

# Test programs are targets of their own; the scripts run the command line program.
target_of() {
    if [ -n "$(find "$tree/tests" -name "$1.sh")" ]; then echo korvane_program; else echo "$1"; fi
}

build() {
    nice cmake --build "$tree/build/dev" --target "$@" >"$work/build.log" 2>&1
}

run_tests() {
    (cd "$tree/build/dev" && nice ctest -R "^($1)\$" --no-tests=error --output-on-failure >"$work/test.log" 2>&1)
}

# The copy, with all that is needed built and seen to pass as it is.
prepare() {
    local targets=() wanted i
    if [ ! -e "$tree/build/dev/build.ninja" ]; then
        mkdir -p "$tree"
        git archive "$commit" | tar -x -C "$tree"
        (cd "$tree" && cmake --preset dev >/dev/null)
    fi
    # A mutation that hangs need not hang for ten minutes.
    find "$tree/build/dev" -name CTestTestfile.cmake -exec sed -i 's/TIMEOUT "600"/TIMEOUT "200"/' {} +
    mapfile -t wanted < <(for i in "${todo[@]}"; do echo "${tests[i]}"; done | sort -u)
    for i in "${wanted[@]}"; do targets+=("$(target_of "$i")"); done
    if ! build "${targets[@]}" || ! run_tests "$(IFS='|' && echo "${wanted[*]}")"; then
        echo "mutate: $commit does not pass as it is; see $work/*.log" >&2
        exit 1
    fi
}

# Prints what became of a mutation.
try() {
    local path=$tree/${files[$1]} text without count
    [ -f "$path" ] || { echo absent && return; }
    text=$(<"$path")
    without=${text//"${finds[$1]}"/}
    count=$(((${#text} - ${#without}) / ${#finds[$1]}))
    [ "$count" = 1 ] || { echo "found-$count-times" && return; }
    cp "$path" "$work/original"
    printf '%s\n' "${text/"${finds[$1]}"/"${replacements[$1]}"}" >"$path"
    if ! build "$(target_of "${tests[$1]}")"; then
        echo does-not-build
    elif run_tests "${tests[$1]}"; then
        echo missed
    else
        echo caught
        cp "$work/test.log" "$work/${names[$1]}.log"
    fi
    cp "$work/original" "$path"
}

if [ ${#todo[@]} -gt 0 ]; then
    # A run that was cut off has left its file as it was mutated.
    if [ -e "$work/mutated" ]; then cp "$work/original" "$(<"$work/mutated")"; fi
    prepare
fi
for i in "${todo[@]}"; do
    start=$SECONDS
    echo "$tree/${files[i]}" >"$work/mutated"
    verdict=$(try "$i")
    rm "$work/mutated"
    sed -i "/^${names[i]} /d" "$results"
    echo "${names[i]} $verdict $((SECONDS - start))" >>"$results"
    echo "${names[i]} $verdict" >&2
done

unwelcome=0
declare -A counts=()
printf '%-36s %-15s %4s  %-30s %s\n' mutation verdict s test file
for i in "${!names[@]}"; do
    read -r _ verdict seconds < <(grep "^${names[i]} " "$results" || echo "- untried -")
    if [ "$verdict" = missed ] && [[ $expected_misses == *" ${names[i]} "* ]]; then
        verdict="missed-as-known"
    elif [ "$verdict" != caught ] && [ "$verdict" != untried ]; then
        unwelcome=1
    fi
    counts[$verdict]=$((${counts[$verdict]:-0} + 1))
    printf '%-36s %-15s %4s  %-30s %s\n' "${names[i]}" "$verdict" "$seconds" "${tests[i]}" "${files[i]}"
done
for verdict in "${!counts[@]}"; do
    echo "$verdict ${counts[$verdict]}"
done
exit $unwelcome
