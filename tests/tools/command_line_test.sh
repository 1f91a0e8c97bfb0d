#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The program as a whole, reading and writing photos, and the commands blur and scene.
source "$(dirname "$0")/checks.sh"

accepts help
holds grep -q '^  0  *all went well' out.log
cp out.log main.log
for command in $(sed -n '/^Subcommands/,/^$/s/^  \([a-z]*\) .*/\1/p' out.log); do
    accepts help "$command"
    holds grep -A1 Example: out.log
    holds grep -qE "^  korvane $command" out.log
    holds test -z "$(cat main.log out.log | grep -E '.{101}')"
    cp out.log explained.log
    accepts "$command" --help
    holds cmp -s explained.log out.log
done

# Things are in their places, within 8 of their colours: a turned, mirrored or colour-swapped scene fails.
accepts scene house.png --size 640x360
accepts scene portrait.png --size 640x360 --subject portrait
while read -r scene part place color; do
    convert $scene.png -crop "1x1+$place" +repage found.png
    convert -size 1x1 "xc:rgb($color)" expected.png
    distance=$(compare -metric PAE found.png expected.png null: 2>&1 | cut -d' ' -f1)
    holds test "$part" -a "${distance%.*}" -le $((8 * 257))
done <<'END'
house sky 4+2 60,109,186
house sun 489+72 255,250,224
house door 105+270 52,84,120
house chimney 188+95 98,74,66
house board 415+290 250,248,240
portrait background 200+100 43,76,90
portrait skin 290+200 227,168,143
portrait pupil 290+162 14,14,18
portrait lights 536+126 175,122,79
END

accepts scene scene.jpg --size 320x180
run stamp scene.jpg -o stamped.jpg --text 12 --verbose || complain verbose

# In place, over an existing file, through a link, and with odd names.
echo 'no photo' >target.jpg
accepts blur scene.jpg -o target.jpg --radius 254 --color 10aBfF --alpha 256
cp scene.jpg copy.jpg
for method in stack box gauss fast iir; do
    accepts blur copy.jpg -o copy.jpg --radius 0 --method $method
done
# What each method makes of a grey point, from its middle to the right; then the colour, up to the last pixels.
convert -size 41x41 xc:black -fill '#F0F0F0' -draw 'point 20,20' point.png
while read -r method row; do
    accepts blur point.png -o spread.png --method "$method" --radius 3
    # shellcheck disable=SC2046
    holds test "$(echo $(convert spread.png -crop 5x1+20+20 -depth 8 gray:- | od -An -tu1))" = "$row"
done <<'END'
stack 15 11 7 3 0
box 5 5 5 5 0
gauss 4 4 3 3 2
fast 4 4 4 4 0
iir 26 18 6 1 0
END
accepts scene odd.png --size 151x83
accepts blur odd.png -o dimmed.png --radius 0 --color '#F08020' --alpha 100
convert odd.png -fill '#F08020' -colorize 39.0625 expected.png
holds test "$(compare -metric PAE dimmed.png expected.png null: 2>&1 | cut -d. -f1 | cut -d' ' -f1)" -le 257
# The same strength with every method, whatever its radius means; half of the colour unless told.
accepts blur scene.jpg -o even.png --method gauss --radius 6
for method in stack box fast iir; do
    accepts blur scene.jpg -o sigma.png --method $method --sigma 6
    holds test "$(compare -metric MAE even.png sigma.png null: 2>&1 | cut -d. -f1)" -lt 600
done
accepts blur scene.jpg -o half.png --radius 9 --color '#0000ff' --alpha 128
for color in '#00f' blue BLUE 0000Ff; do
    accepts blur scene.jpg -o color.png --radius 9 --color $color
    holds cmp -s half.png color.png
done
accepts blur -o './-.jpg' ./scene.jpg --alpha 0
holds test -z "$(find . -name '*.tmp')"

finish
