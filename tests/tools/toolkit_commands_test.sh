#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The commands corners and palette.
source "$(dirname "$0")/checks.sh"

accepts scene scene.jpg --size 320x180


# found ARGUMENTS...: the number that the command prints.
found() {
    accepts corners scene.jpg -o marked.jpg "$@"
    holds grep -qxE '[0-9]+ corners?' out.log
    cut -d' ' -f1 out.log
}
few=$(found)
all=$(found --no-suppression)
strong=$(found --threshold 60)
holds test "$few" -gt 0
holds test "$all" -gt "$few"
holds test "$strong" -lt "$few"
holds test "$(found --min-dist 0)" = 1
holds test "$(found --threshold 255)" = 0

# As JSON: all corners with scores above the threshold; the shares of a palette add up; the picture stays alone in a pipe.
accepts corners scene.jpg --json --threshold 60
holds test "$(jq '[.corners[] | select(.x < 320 and .y < 180 and .score >= 60)] | length' out.log)" = "$strong"
accepts palette scene.jpg -n 5 --json
holds jq -e '(.colors | length == 5) and ([.colors[].share] | add - 1 | fabs < 1e-9)' out.log
jq -r '.colors[].color' out.log >colors.txt
accepts palette scene.jpg -n 5
holds cmp -s out.log colors.txt
run corners scene.jpg -o - --json || complain 'corners into a pipe'
holds jq -e .corners err.log
holds test "$(identify -format '%m %wx%h' out.log)" = 'JPEG 320x180'

# The marks are there: without corners the photo is only coded once more, with them red is its strongest colour.
reds() { "${program[@]}" palette "$1" -n 256 | grep -cE '^#[C-F][0-9A-F][0-5][0-9A-F][0-5]'; }
accepts corners scene.jpg -o plain.jpg --threshold 255
accepts corners scene.jpg -o marked.jpg --threshold 10 --min-dist 4
holds test "$(reds marked.jpg)" -gt "$(reds plain.jpg)"

accepts palette scene.jpg -n 5 -o five.jpg
holds cmp -s colors.txt out.log
holds test "$(identify -format '%wx%h' five.jpg)" = 320x212
# A PNG file has exactly the palette that the command prints.
for count in 1 5 16 256; do
    accepts palette scene.jpg -n $count -o reduced.png
    sort -u out.log >printed.txt
    holds test "$(wc -l <out.log)" -le $count
    holds test "$(identify -format '%r' reduced.png | grep -c Pseudo)" = 1
    holds cmp -s <(convert reduced.png -unique-colors txt:- | grep -oE '#[0-9A-F]{6}' | sort -u) <(grep -Fxf \
        <(convert reduced.png -unique-colors txt:- | grep -oE '#[0-9A-F]{6}' | sort -u) printed.txt)
    holds test "$(convert reduced.png -unique-colors -format %w info:)" -ge $((count * 9 / 10))
done
# Each pixel stays where it is, also where several share a byte.
for count in 5 16 64; do
    accepts palette scene.jpg -n $count -o reduced.png
    holds test "$(compare -metric MAE scene.jpg reduced.png null: 2>&1 | cut -d. -f1)" -lt 5000
done

# Animations. The quantizer's palette is that of `palette`, for each frame or for all.
accepts blur scene.jpg -o blurred.jpg --radius 9
accepts scene small.jpg --size 20x20
accepts gif scene.jpg blurred.jpg scene.jpg -o out.gif --delay 80
holds test "$(identify -format '%wx%h %T %s,' out.gif)" = '320x180 8 0,320x180 8 1,320x180 8 2,'
accepts palette blurred.jpg -n 256 -o reduced.png
holds test "$(compare -metric AE 'out.gif[1]' reduced.png null: 2>&1)" = 0
accepts gif scene.jpg blurred.jpg -o - --one-palette --colors 7
holds test "$(convert gif:out.log -append -unique-colors -format %w info:)" = 7
mv out.log one.gif
accepts gif scene.jpg blurred.jpg -o dithered.gif --one-palette --colors 7 --dither --loop 3
# Dithered, the mean of an area comes nearer to the photo's.
far() {
    convert "$1[1]" -blur 0x4 far.png && convert blurred.jpg -blur 0x4 near.png
    compare -metric RMSE far.png near.png null: 2>&1 | cut -d. -f1 | cut -d" " -f1
}
holds test "$(far dithered.gif)" -lt "$(far one.gif)"
holds test "$(exiftool -s3 -AnimationIterations dithered.gif)" = 3

finish
