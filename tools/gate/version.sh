#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The version stands in the project line of CMakeLists.txt and, for readers, at the top of CHANGELOG.md. Both must agree,
# and no other file may repeat it: what needs it includes korvane/version.h or asks CMake.
# usage: tools/gate/version.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
version=$(sed -n 's/^project(korvane VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
newest=$(sed -n 's/^## \([0-9.]*\).*/\1/p' CHANGELOG.md | head -n 1)
if [ -z "$version" ] || [ "$version" != "$newest" ]; then
    echo "CMakeLists.txt says version '$version', the top entry of CHANGELOG.md '$newest'"
    exit 1
fi
if git grep -nIwF "$version" -- . ':!CMakeLists.txt' ':!CHANGELOG.md'; then
    echo "the version is repeated above: include korvane/version.h or ask CMake"
    exit 1
fi
echo "version $version stands in one place"
