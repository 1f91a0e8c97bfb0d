# SPDX-License-Identifier: Apache-2.0
# Photos with the longest sides that a JPEG file has, one pixel wide or high, through the commands.
source "$(dirname "$0")/../tools/checks.sh"

calls=0
for size in 65500x1 1x65500 65500x16 16x65500; do
    accepts scene in.jpg --size $size
    for command in 'blur IN -o out.jpg' 'blur IN -o out.webp' 'blur IN -o out.jpg --method iir' \
        'blur IN -o out.jpg --method fast' 'corners IN -o out.png' 'palette IN -n 4 -o out.png' 'gif IN -o out.gif' \
        'merge IN IN -o out.jpg' 'advise IN' 'stamp IN -o out.jpg --text 1' 'filter xray IN -o out.jpg' \
        'filter distorted IN -o out.jpg'; do
        # Done, or one line that says why not and no file.
        # shellcheck disable=SC2086
        timeout 120 "${program[@]}" ${command//IN/in.jpg} >out.log 2>err.log
        code=$?
        calls=$((calls + 1))
        [[ $code = 0 || $code = 2 && $(grep -c '^korvane: ' err.log) = 1 ]] || complain "$command of $size: exit code $code, $(head -3 err.log)"
        [[ $command != filter* ]] || holds grep -q 'this GPU driver draws at most' err.log
        [ $code = 0 ] || holds test -z "$(find . -name 'out.[jpgw]*')"
        [ $code = 0 ] || echo "$size $command: $(cat err.log)"
        rm -f out.jpg out.png out.gif out.webp
    done
done
refuses 'not a size' scene in.jpg --size 65501x1
echo "proof: $calls calls with the longest sides"
finish
