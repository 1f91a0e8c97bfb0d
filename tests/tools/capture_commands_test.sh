#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The commands merge, advise and sweep.
source "$(dirname "$0")/checks.sh"

prints() { [ "$(cat out.log)" = "$1" ] || complain "printed $(cat out.log)"; }

accepts scene a.jpg --size 61x39
accepts blur a.jpg -o b.jpg --radius 9 --alpha 100
accepts blur a.jpg -o dark.jpg --color '#000000' --alpha 256
accepts blur a.jpg -o light.jpg --color '#808080' --alpha 256

# The mean does not mind the order; equal frames merge to themselves.
accepts merge a.jpg b.jpg a.jpg -o mean.jpg
holds grep -qxE 'high light \(mean\), mean luma [0-9]+, 3 frames merged' out.log
accepts merge b.jpg a.jpg a.jpg -o reordered.jpg
holds cmp -s mean.jpg reordered.jpg
accepts merge a.jpg -o once.jpg
accepts merge a.jpg a.jpg a.jpg a.jpg -o a_few_times.jpg
holds cmp -s once.jpg a_few_times.jpg
accepts merge dark.jpg light.jpg dark.jpg -o brightest.jpg
prints 'low light (maximum), mean luma 16, 3 frames merged'
accepts merge light.jpg -o light_alone.jpg
holds cmp -s brightest.jpg light_alone.jpg

accepts advise dark.jpg dark.jpg light.jpg light.jpg
prints 'dark.jpg: aperture 2.0, gain 2 (mean luma 16)
dark.jpg: no change
light.jpg: aperture 4.0, gain 1 (mean luma 52)
light.jpg: aperture 5.6, gain 0 (mean luma 70)'
odd=$'\xff "\n.jpg'
cp light.jpg "$odd"
accepts advise dark.jpg dark.jpg "$odd" --json
holds test "$(jq -c '[.frames[] | [.file, .advice.aperture, .advice.mean_luma]]' out.log)" = \
    '[["dark.jpg",2,16],["dark.jpg",null,null],["� \"\n.jpg",4,52]]'

printf '# degrees\n10,20\n\n 10.4, 17.5 \r\n10,30' >track.csv
expected='row,result,direction,offset_x,offset_y
1,INVALID_PARAMETER,NONE,0,0
2,NO_ERROR,LEFT_TO_RIGHT,70,0
3,WRONG_DIRECTION,LEFT_TO_RIGHT,-350,0
# INVALID_PARAMETER: the first reading only sets the reference angles and answers 3 (INVALID_PARAMETER), and so does every reading while a reference angle is exactly 0'
accepts sweep track.csv
prints "$expected"
accepts sweep track.csv --json
holds test "$(jq -r '.readings[] | map(tostring) | join(",")' out.log)" = "$(sed '1d;/^#/d' <<<"$expected")"
holds jq -e '.hint | startswith("the first reading")' out.log
accepts sweep track.csv a.jpg b.jpg
prints "$expected"
for line in 'nan,1' '1,inf' '1,361' '10' '10;20' '10,20,30' 'x,y' '10,20 degrees'; do
    printf '1,2\n%s\n' "$line" >bad.csv
    refuses 'bad.csv, line 2: expected two angles' sweep bad.csv
done

finish
