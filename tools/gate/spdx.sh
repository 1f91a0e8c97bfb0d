#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Every source file names its licence in one line: the first, or the second below "#!" and a document type. --add writes it where it is
# missing.
# usage: tools/gate/spdx.sh [--add]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
line="SPDX-License-Identifier: Apache-2.0"

comment_of() {
    case $1 in
    *.c | *.cpp | *.def | *.h | *.in.h | *.java | *.js | *.kt | *.S | *.mjs | */version.h.in) echo "// $line" ;;
    *.cmake | *.cmake.in | *.imp | *.map | *.pc.in | *.pro | *.properties | *.py | *.sh | *.supp | *.yml | *.yaml) echo "# $line" ;;
    */CMakeLists.txt | CMakeLists.txt | .ci/run | dev | .clang-format | .clang-tidy | docs/Doxyfile) echo "# $line" ;;
    *.css) echo "/* $line */" ;;
    *.html) echo "<!-- $line -->" ;;
    esac
}

missing=0
while read -r file; do
    comment=$(comment_of "$file")
    if [ -z "$comment" ] || head -n 2 "$file" | grep -qxF "$comment"; then
        continue
    fi
    if [ "${1:-}" = --add ]; then
        at=1
        head -n 1 "$file" | grep -qE '^(#!|<!doctype)' && at=2
        sed -i "${at}i $comment" "$file"
    else
        echo "no licence line: $file"
        missing=1
    fi
done < <(git ls-files)
[ $missing = 0 ] || { echo "tools/gate/spdx.sh --add writes it"; exit 1; }
