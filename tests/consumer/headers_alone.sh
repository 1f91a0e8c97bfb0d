#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compiles each installed header alone, with nothing in front of it and with the client's warnings on. Not on the path:
# the sources, the JDK.
# usage: headers_alone.sh INCLUDE_DIR CXX
set -euo pipefail
cd "$1"
find . -name '*.h' -printf '%P\0' | xargs -0 -P "$(nproc)" -I HEADER sh -c \
    'echo "#include \"HEADER\"" | "$0" -std=c++20 -Wall -Wextra -Wconversion -Werror -fsyntax-only -I. -x c++ - ||
        { echo "does not compile alone: HEADER"; exit 1; }' "$2"
