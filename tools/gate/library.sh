#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Checks what others see of a built libkorvane.so: the exported names, its own name, the libraries it needs, and the
# segment alignment that systems with pages of 16 KiB ask for.
# usage: tools/gate/library.sh check LIBRARY clang++|g++
#        tools/gate/library.sh write LIBRARY_OF_CLANG LIBRARY_OF_GCC     writes cmake/exports.txt anew
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
list=cmake/exports.txt
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
needed='libjpeg|libhwy|libEGL|libGLESv2|libstdc\+\+|libm|libgcc_s|libc|ld-linux.*'

# One line a name: as the linker knows it, then as C++ spells it.
exported() {
    nm -D --defined-only "$1" | awk '{print $3}' >"$scratch/names"
    paste -d ' ' "$scratch/names" <(c++filt <"$scratch/names") | LC_ALL=C sort -k 2
}

# The list, with what only one of the compilers emits marked.
write() {
    exported "$1" >"$scratch/clang"
    exported "$2" >"$scratch/gcc"
    {
        echo "# Every name that leaves libkorvane.so. Written by tools/gate/library.sh; a change here is one of the interface."
        diff --old-line-format='%l [clang++ only]'$'\n' --new-line-format='%l [g++ only]'$'\n' \
            --unchanged-line-format='%L' "$scratch/clang" "$scratch/gcc" || true
    } >$list
}

check_exports() {
    local other=g++
    [ "$2" = g++ ] && other=clang++
    sed "/^#/d; / \[$other only\]\$/d; s/ \[.* only\]\$//" $list >"$scratch/expected"
    exported "$1" >"$scratch/found"
    diff "$scratch/expected" "$scratch/found" >"$scratch/difference" && return
    sed -n 's/^> /exported but not listed: /p; s/^< /listed but not exported: /p' "$scratch/difference"
    echo "If the interface shall change: tools/gate/library.sh write build/dev/libkorvane.so build/gcc/libkorvane.so"
    return 1
}

# The file's name is its identity, since Android loads it by that name.
check_dynamic_section() {
    readelf -dW "$1" >"$scratch/dynamic"
    grep -q '(SONAME).*\[libkorvane\.so\]' "$scratch/dynamic" || { echo "the library's own name is not libkorvane.so"; return 1; }
    if grep -E '\((RPATH|RUNPATH|TEXTREL)\)' "$scratch/dynamic"; then
        echo "a search path or a relocation of code is in the library"
        return 1
    fi
    if sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' "$scratch/dynamic" | grep -vE "^($needed)\.so(\.[0-9]+)?\$"; then
        echo "the library needs more than it should"
        return 1
    fi
}

check_segments() {
    if readelf -lW "$1" | awk '$1 == "LOAD" && $NF != "0x4000" {print; wrong = 1} END {exit !wrong}'; then
        echo "a segment is not aligned to 0x4000"
        return 1
    fi
}

case ${1:-} in
check)
    check_exports "$2" "$3"
    check_dynamic_section "$2"
    check_segments "$2"
    echo "$2: $(wc -l <"$scratch/found") exported names, as listed"
    ;;
write)
    write "$2" "$3"
    ;;
*)
    sed -n 's/^# usage: //p; s/^#        //p' "$0" >&2
    exit 2
    ;;
esac
