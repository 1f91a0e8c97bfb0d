#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The commands filter, filters and doctor, without a display and with one.
source "$(dirname "$0")/checks.sh"
unset DISPLAY WAYLAND_DISPLAY

accepts scene scene.jpg --size 97x61
accepts filters
for name in None Table Distorted Extrusion Mirror Temperature Timetunnel Xray; do
    holds grep -q "^ImageFilter$name: " out.log
done
holds test -z "$(grep -E '.{101}' out.log)"
for row in 'mStrength +float +-0\.5 \.\.\. 10 +0\.2' 'mRadius +float +0 \.\.\. 1 +0\.4472'; do
    holds grep -qE "^ +$row " out.log
done
# JSON has the same rows.
plain() { sed -nE 's/^    ([^ ]+) +(\S.*\S|\S+) *$/\1/p' | sort; }
sed 1d out.log | plain >names.txt
accepts filters --json
holds cmp -s names.txt <(jq -r '.filters[].parameters[].name, .every_filter[].name' out.log | sort)
holds jq -e '.filters[] | select(.name == "ImageFilterDistorted").parameters[] | select(.name == "mRadius") |
    [.type, .minimum, .maximum, .default] == ["float", 0, 1, 0.4472]' out.log
# The shown default changes nothing.
for filter in distorted timetunnel; do
    accepts filter $filter scene.jpg -o default.png
    accepts filter $filter scene.jpg -o set.png --set mRadius=0.4472
    holds test "$(compare -metric MAE default.png set.png null: 2>&1 | cut -d. -f1 | cut -d' ' -f1)" -lt 20
done

accepts doctor
for line in 'EGL platform  *\(device\|surfaceless\)$' 'EGL vendor' 'GL renderer' 'limit texture size' 'program binaries'; do
    holds grep -q "^$line" out.log
done

accepts doctor --json
holds jq -e '.gl_renderer and .limits.texture_size >= 2048 and (.extensions | map(type == "boolean") | all)' out.log

# What is set has its effect.
accepts filter None scene.jpg -o none.png
accepts filter Mirror scene.jpg -o mirror.png --set mCenterx=0.5
holds test "$(compare -metric MAE none.png mirror.png null: 2>&1 | cut -d. -f1 | cut -d' ' -f1)" -gt 257

# Longer than any driver's textures.
accepts scene long.png --size 65500x1
refuses 'draws at most [0-9]+ pixels' filter None long.png -o new.png

accepts filter Distorted scene.jpg -o without.png
program=(xvfb-run -a -s -noreset "${program[@]}")
accepts filter Distorted scene.jpg -o with.png
holds cmp -s without.png with.png
accepts doctor
holds grep -qxE 'EGL platform +display' out.log
export __EGL_VENDOR_LIBRARY_FILENAMES=/none
refuses "no usable EGL display" filter Xray scene.jpg -o new.jpg
refuses "no usable EGL display" doctor
finish
