# SPDX-License-Identifier: Apache-2.0
# What the tests of this folder begin with: their three arguments, and a folder that goes with them.
# shellcheck shell=bash disable=SC2034
set -euo pipefail
source=$1
build=$2
jdk=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export JAVA_HOME=$jdk
export PATH=$jdk/bin:$PATH

fail() {
    echo "failed: $*" >&2
    exit 1
}
