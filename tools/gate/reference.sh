#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds the API reference of the public headers into out/docs. A warning of Doxygen is an error.
# usage: tools/gate/reference.sh BUILD_DIR
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
generated=$1/generated
rm -rf out/docs
mkdir -p out/docs
{
    cat docs/Doxyfile
    echo "OUTPUT_DIRECTORY = out/docs"
    echo "STRIP_FROM_PATH = . $generated"
    sed -n 's/^#define KORVANE_VERSION "\(.*\)"/PROJECT_NUMBER = \1/p' "$generated/korvane/version.h"
    echo "INPUT = docs/reference.dox"
    sed "s|.*|INPUT += \"&\"|" "$generated/public_headers.txt"
} | doxygen -
echo "out/docs/index.html"
