#!/usr/bin/env bash
# The commands corners and palette.
source "$(dirname "$0")/checks.sh"

accepts scene scene.jpg --size 320x180

corners=(corners scene.jpg -o new.jpg)
refuses 'output is required' corners scene.jpg
refuses '--threshold.*256' "${corners[@]}" --threshold 256
refuses '--threshold.*-1' "${corners[@]}" --threshold=-1
refuses '--min-dist.*-1' "${corners[@]}" --min-dist=-1
refuses 'cannot read missing.jpg' corners missing.jpg -o new.jpg
refuses 'cannot write nowhere/new.jpg' corners scene.jpg -o nowhere/new.jpg

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

# The marks are there: without corners the photo is only coded once more, with them red is its strongest colour.
reds() { "${program[@]}" palette "$1" -n 256 | grep -cE '^#[C-F][0-9A-F][0-5][0-9A-F][0-5]'; }
accepts corners scene.jpg -o plain.jpg --threshold 255
accepts corners scene.jpg -o marked.jpg --threshold 10 --min-dist 4
holds test "$(reds marked.jpg)" -gt "$(reds plain.jpg)"

refuses '--colors.*0' palette scene.jpg -n 0
refuses '--colors.*513' palette scene.jpg -n 513
refuses 'cannot read missing.jpg' palette missing.jpg
refuses 'cannot write nowhere/new.jpg' palette scene.jpg -n 4 -o nowhere/new.jpg

accepts palette scene.jpg -n 5
holds test "$(grep -cxE '#[0-9A-F]{6}' out.log)" = 5
holds test "$(wc -l <out.log)" = 5
cp out.log five.txt
accepts palette scene.jpg -n 5 -o five.jpg
holds cmp -s five.txt out.log
# A picture that was reduced to five colours has about these five, and white nowhere: all swatches are filled.
accepts palette five.jpg -n 5
for colour in $(cat five.txt); do
    red=$((16#${colour:1:2})) near=0
    for other in $(cat out.log); do
        difference=$((16#${other:1:2} - red))
        [ ${difference#-} -le 12 ] && near=1
    done
    [ $near = 1 ] || complain "$colour is not among $(tr '\n' ' ' <out.log)"
done
accepts scene narrow.jpg --size 3x50
accepts palette narrow.jpg -n 40 -o narrow_palette.jpg

finish
