#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Makes the pictures of the README anew. usage: tools/readme_pictures.sh BUILD_DIR
set -euo pipefail
tools=$(cd "$1/tools" && pwd)
images=$(cd "$(dirname "${BASH_SOURCE[0]}")/../docs/images" && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
"$tools/korvane" scene scene.jpg --size 1600x900
"$tools/korvane" blur scene.jpg -o blurred.jpg --radius 16
"$tools/korvane" blur scene.jpg -o dimmed.jpg --radius 40 --color '#102040' --alpha 128
"$tools/korvane_strip" "$images/strip.jpg" 180 scene.jpg blurred.jpg dimmed.jpg
filtered=()
for filter in Distorted Mirror Xray Temperature; do
    "$tools/korvane" filter ImageFilter$filter scene.jpg -o $filter.jpg
    filtered+=($filter.jpg)
done
"$tools/korvane_strip" "$images/filters.jpg" 150 "${filtered[@]}"
