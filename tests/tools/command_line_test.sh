#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The program as a whole, reading and writing photos, and the commands blur and scene.
source "$(dirname "$0")/checks.sh"

for version in --version -V; do
    accepts $version
    holds grep -qxE 'korvane [0-9]+\.[0-9]+\.[0-9]+' out.log
done
accepts help
for word in '^Exit codes:' '^  0  *all went well' 'blur' 'help COMMAND'; do
    holds grep -q "$word" out.log
done
cp out.log main.log
for command in $(sed -n '/^Subcommands/,/^$/s/^  \([a-z]*\) .*/\1/p' out.log); do
    accepts help "$command"
    holds grep -A1 Example: out.log
    holds grep -qE "^  korvane $command" out.log
    holds test -z "$(cat main.log out.log | grep -E '.{101}')"
    cp out.log explained.log
    accepts "$command" --help
    holds cmp -s explained.log out.log
    refuses "see korvane $command --help" "$command" --bogus
done
refuses "no command 'bulr'" help bulr
refuses 'subcommand is required'
refuses "no command 'bulr'" bulr
refuses 'subcommand is required' --bogus

accepts scene scene.jpg --size 320x180
accepts scene narrow.jpg --size 7x41
run stamp scene.jpg -o stamped.jpg --text 12 --verbose || complain verbose
for size in 320 0x9 9x9x9 -9x9; do
    refuses "'$size' is not a size" scene new.jpg "--size=$size"
done
refuses "'cat' is none of house, portrait" scene new.jpg --subject cat
refuses 'does not fit in memory' scene new.jpg --size 65500x65500

blur=(blur scene.jpg -o new.jpg)
refuses 'output is required' blur scene.jpg
refuses '--radius.*255' "${blur[@]}" --radius 255
refuses '--radius.*-1' "${blur[@]}" --radius=-1
refuses '--radius' "${blur[@]}" --radius 3.5
refuses '--radius' "${blur[@]}" --radius wide
refuses "--method.*'median' is none of stack, box, " "${blur[@]}" --method median
refuses '--radius.*81.*--method iir' "${blur[@]}" --method iir --radius 81
refuses '--radius.*2001' "${blur[@]}" --method gauss --radius 2001
refuses '--alpha.*257' "${blur[@]}" --alpha 257
for colour in '#12345' '#1234567' 'redd' '#12g' '#-12' '#12345g' '#-12345' '' '##12345'; do
    refuses "'$colour' is not a colour" "${blur[@]}" --color "$colour"
done

# Inputs that are no photo.
head -c 0 /dev/null >empty.jpg
echo 'not a photo' >text.jpg
head -c 20 scene.jpg >header.jpg
head -c "$(($(wc -c <scene.jpg) / 2))" scene.jpg >half.jpg
printf '\xff\xd8\xff\xd8' >twice.jpg
mkdir folder folder.jpg
refuses 'cannot read a missing.jpg: No such file' blur $'a\nmissing.jpg' -o new.jpg
refuses 'cannot read folder: it is a directory' blur folder -o new.jpg
for file in empty text; do
    refuses "cannot read $file.jpg: it is not a JPEG" blur $file.jpg -o new.jpg
done
for file in header half; do
    refuses "cannot read $file.jpg: .*cut short" blur $file.jpg -o new.jpg
done
refuses 'cannot read twice.jpg: damaged or unsupported JPEG: ' blur twice.jpg -o new.jpg

# Targets that cannot be written, and what stands in a target's place stays.
refuses 'cannot write nowhere/new.jpg: No such file' blur scene.jpg -o nowhere/new.jpg
refuses 'cannot write folder: .*must end in' blur scene.jpg -o folder
refuses 'cannot write folder.jpg: it is a directory' blur scene.jpg -o folder.jpg
refuses 'cannot write /dev/full: No space' blur scene.jpg -o /dev/full
refuses 'cannot write .*: ' blur scene.jpg -o /proc/new.jpg
holds test -c /dev/full
echo 'precious' >target.jpg
limited() (
    failures=0
    trap '' XFSZ
    ulimit -f 2
    refuses "$@"
    exit $failures
)
# A large file fails while it is written, a small one only in the last flush.
for size in 320x180 80x45; do
    limited 'cannot write target.jpg: ' scene target.jpg --size $size || failures=$((failures + 1))
done

# In place, over an existing file, through a link, and with odd names.
accepts blur scene.jpg -o target.jpg --radius 254 --color 10aBfF --alpha 256
cp scene.jpg copy.jpg
accepts blur copy.jpg -o copy.jpg --radius 0
for method in stack box gauss fast iir; do
    accepts blur copy.jpg -o copy.jpg --radius 0 --method $method
done
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
for sigma in nan inf -1 24.1 x; do
    refuses '--sigma' "${blur[@]}" --method iir "--sigma=$sigma"
done
refuses 'excludes' "${blur[@]}" --sigma 3 --radius 3
refuses "'2026-01-02 03:04' does not fit into a photo of 7 x 41" stamp narrow.jpg -o new.jpg --text '2026-01-02 03:04'

accepts blur -o './-.jpg' ./scene.jpg --alpha 0
holds test -z "$(find . -name '*.tmp')"

finish
