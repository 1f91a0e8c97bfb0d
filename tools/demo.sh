#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Blurs and dims a picture from C++ (korvane blur) and from Java (BlurRender on a Java virtual machine), and checks that
# both come to the same; then makes a page with every effect. Called by ./dev demo.
# usage: tools/demo.sh [--without-page] BUILD_DIR OUT_DIR [PHOTO]
set -euo pipefail

with_page=true
if [ "${1:-}" = --without-page ]; then
    with_page=false
    shift
fi
if [ $# -lt 2 ] || [ $# -gt 3 ]; then
    echo "usage: tools/demo.sh [--without-page] BUILD_DIR OUT_DIR [PHOTO]" >&2
    exit 2
fi
build=$1
out=$2
photo=${3:-}

radius=25
color='#102040'
alpha=112
# Two JPEG encoders stand between the two results.
mean_difference_limit=1.5

korvane=$build/tools/korvane
mkdir -p "$out"
if [ -z "$photo" ]; then
    photo=$out/scene.jpg
    "$korvane" scene "$photo"
fi
# Java's reader does not look at the orientation: both sides get the photo upright.
"$korvane" blur "$photo" -o "$out/upright.png" --radius 0
"$korvane" blur "$out/upright.png" -o "$out/blurred_by_cpp.jpg" --radius $radius --color "$color" --alpha $alpha
java -Djava.awt.headless=true -Djava.library.path="$build" \
    -cp "$build/java/korvane.jar:$build/java/korvane_standins.jar:$build/java/korvane_demo.jar" \
    korvane.demo.BlurDemo "$out/upright.png" "$out/blurred_by_java.jpg" $radius "$color" $alpha
if ! difference=$(java -Djava.awt.headless=true -cp "$build/java/korvane_demo.jar" korvane.demo.PictureDifference \
    "$out/blurred_by_cpp.jpg" "$out/blurred_by_java.jpg" $mean_difference_limit); then
    echo "demo: the pictures made from C++ and from Java differ (by $difference of 255)" >&2
    exit 1
fi

folder=$(cd "$out" && pwd)
cat <<TEXT
The picture                 $(realpath "$photo")
Blurred and dimmed by C++   $folder/blurred_by_cpp.jpg
The same through Java       $folder/blurred_by_java.jpg   (differs by $difference of 255 in the mean)
TEXT

if $with_page; then
    gallery=()
    [ "$photo" = "$out/scene.jpg" ] || gallery=(--photo "$photo")
    bench=$(dirname "$out")/bench.json
    [ ! -f "$bench" ] || gallery+=(--bench "$bench")
    "$(dirname "${BASH_SOURCE[0]}")/bench/gallery.py" "$build" "$out" "${gallery[@]}"
    echo "All effects, in a browser   file://$folder/index.html"
fi
