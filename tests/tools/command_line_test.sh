#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The program as a whole, reading and writing photos, and the commands blur and scene.
source "$(dirname "$0")/checks.sh"

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
done

accepts scene scene.jpg --size 320x180
run stamp scene.jpg -o stamped.jpg --text 12 --verbose || complain verbose

# Targets that cannot be written, and what stands in a target's place stays.
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
accepts blur -o './-.jpg' ./scene.jpg --alpha 0
holds test -z "$(find . -name '*.tmp')"

finish
