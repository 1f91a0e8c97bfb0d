#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Makes the pictures of the README anew. usage: tools/readme_pictures.sh BUILD_DIR
set -euo pipefail
tools=$(cd "$1/tools" && pwd)
images=$(cd "$(dirname "${BASH_SOURCE[0]}")/../docs/images" && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# strip NAME HEIGHT COMMAND...: a row of pictures, one for each of the commands of the library's program.
strip() {
    local name=$1 height=$2 arguments pictures=()
    shift 2
    for arguments in "$@"; do
        pictures+=("$name-${#pictures[@]}.png")
        # shellcheck disable=SC2086 # one word an argument
        "$tools/korvane" $arguments -o "${pictures[-1]}"
    done
    "$tools/korvane_strip" "$images/$name.jpg" "$height" "${pictures[@]}"
}

"$tools/korvane" scene house.png --size 1600x900
"$tools/korvane" scene portrait.png --size 1600x900 --subject portrait
"$tools/korvane" scene square.png --size 900x900 --subject portrait
strip strip 240 "blur portrait.png --radius 0" "blur portrait.png --radius 24" \
    "blur portrait.png --radius 40 --color #102040 --alpha 128"
strip blurs 190 "blur square.png --radius 20" "blur square.png --method box --radius 20" \
    "blur square.png --method gauss --radius 20" "blur square.png --method fast --radius 20" \
    "blur square.png --method iir --radius 20"
strip filters 150 "filter None house.png" "filter Table house.png" "filter Temperature house.png" \
    "filter Xray house.png"
strip shapes 150 "filter Distorted house.png --set mStrength=3" "filter Extrusion house.png" \
    "filter Mirror house.png" "filter Timetunnel house.png"
