#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The version stands in the project line of CMakeLists.txt and, for readers, at the top of CHANGELOG.md. Both must agree.
# Documents and the sample may name packages by it (korvane-1.2.3.aar, korvane:korvane:1.2.3) and must agree too; no other
# file may repeat it: what needs it includes korvane/version.h or asks CMake.
# usage: tools/gate/version.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
version=$(sed -n 's/^project(korvane VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
newest=$(sed -n 's/^## \([0-9.]*\).*/\1/p' CHANGELOG.md | head -n 1)
if [ -z "$version" ] || [ "$version" != "$newest" ]; then
    echo "CMakeLists.txt says version '$version', the top entry of CHANGELOG.md '$newest'"
    exit 1
fi
readers=('*.md' 'samples/*')
if git grep -nIE 'korvane(-[a-z]+)*[-:][0-9]+\.[0-9]+\.[0-9]+' -- "${readers[@]}" ':!CHANGELOG.md' |
    grep -vE "korvane(-[a-z]+)*[-:]${version//./\\.}([^0-9]|\$)"; then
    echo "another version than $version is named above"
    exit 1
fi
if git grep -nIwF "$version" -- . ':!CMakeLists.txt' "${readers[@]/#/:!}"; then
    echo "the version is repeated above: include korvane/version.h or ask CMake"
    exit 1
fi
echo "version $version stands in one place"
