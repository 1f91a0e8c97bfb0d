#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# What a photo carries, the file formats, pipes and targets. exiftool and ImageMagick say what is right.
source "$(dirname "$0")/checks.sh"

# differs METRIC FILE FILE: in the range of a byte.
differs() { compare -metric "$1" "$2" "$3" null: 2>&1 | awk '{ printf "%d", $1 / ("'$1'" == "AE" ? 1 : 257) }'; }
same_pixels() { [ "$(differs AE "$1" "$2")" = 0 ] || complain "$1 and $2 differ in $(differs AE "$1" "$2") pixels"; }
tags() { exiftool -a -G1 -s -EXIF:all -XMP:all -ICC_Profile:all -IPTC:all -File:Comment --IFD1:all --XMP-xmp:all "$1" | sort; }
# copied INPUT OUTPUT: all tags are there, but for the orientation, which is 1.
copied() {
    diff <(tags "$1" | sed '/Orientation  /d' | grep -v 'YCbCrPositioning\|IPTCDigest') \
        <(tags "$2" | sed '/Orientation  /d' | grep -v 'YCbCrPositioning\|IPTCDigest') >diff.log ||
        complain "$2: $(head -6 diff.log)"
    [[ $(exiftool -s3 -n -IFD0:Orientation "$2") =~ ^(|1)$ ]] || complain "$2 is still to be turned"
    [ -z "$(exiftool -IFD1:all -XMP-xmp:all -Photoshop:all "$2")" ] || complain "$2 has a thumbnail"
}
bytes() { printf "$(printf '\\x%s' "$@")"; }

accepts scene scene.png --size 97x61
accepts scene thumbnail.jpg --size 40x30
profiles=/usr/share/color/icc/ghostscript
convert scene.png -quality 83 -sampling-factor 2x1 plain.jpg
orders=(MM II) forms=(Shorthand NoIndent)
for i in 0 1; do
    exiftool -q -o tagged$i.jpg -ExifByteOrder=${orders[i]} -Orientation#=1 -Make=Korvane -Model='Box 1' \
        -DateTimeOriginal='2026:01:02 03:04:05' -GPSLatitude=47.3 -GPSLatitudeRef=N -GPSLongitude=8.5 -GPSLongitudeRef=W \
        -UserComment=hello -ExifImageWidth=97 -ExifImageHeight=61 -XMP-dc:Title='A title' -XMP-tiff:Orientation#=1 \
        -IPTC:Keywords=house "-icc_profile<=$profiles/default_rgb.icc" -Comment='a comment' \
        '-ThumbnailImage<=thumbnail.jpg' '-XMP-xmp:ThumbnailImage<=thumbnail.jpg' \
        '-PhotoshopThumbnail<=thumbnail.jpg' plain.jpg
done

# Turned upright whatever the file says, and nothing but the orientation and the thumbnail is lost.
for orientation in 1 2 3 4 5 6 7 8; do
    exiftool -q -o "turned$orientation.jpg" -api "Compact=${forms[orientation % 2]}" -Orientation#=$orientation \
        -XMP-tiff:Orientation#=$orientation tagged$((orientation % 2)).jpg
    convert turned$orientation.jpg -auto-orient -strip expected.png
    accepts blur turned$orientation.jpg -o out.png --radius 0
    same_pixels out.png expected.png
    accepts blur turned$orientation.jpg -o out.jpg --radius 0
    holds test "$(identify -format '%wx%h %Q' out.jpg)" = "$(identify -format '%wx%h' expected.png) 83"
    holds test "$(exiftool -s3 -ExifImageWidth -ExifImageHeight out.jpg | paste -sd x)" = "$(identify -format %wx%h out.jpg)"
    holds test "$(exiftool -s3 -n -YCbCrSubSampling out.jpg)" = '2 1'
    holds test "$(exiftool -s3 -n -XMP-tiff:Orientation out.jpg)" = 1
    [ $orientation -gt 4 ] || copied turned$orientation.jpg out.jpg
    # Makers' notes name their own place, so nothing moves: the orientation, two sides and the place of the thumbnail
    # change, and its bytes go.
    exiftool -b -EXIF turned$orientation.jpg >before.exif
    exiftool -b -EXIF out.jpg >after.exif
    holds test "$(cmp -l before.exif after.exif 2>/dev/null | wc -l)" -le 5
    holds test $(($(wc -c <before.exif) - $(wc -c <after.exif))) -ge "$(wc -c <thumbnail.jpg)"
done
holds test "$(exiftool -s3 -Comment out.jpg)" = 'a comment'
holds test "$(exiftool -s3 -IPTC:Keywords out.jpg)" = house
exiftool -q -o blocks.jpg -IPTC:all= -Comment= tagged0.jpg
for chain in 'png webp jpg' 'webp png jpeg'; do
    previous=blocks.jpg
    for extension in $chain; do
        accepts blur $previous -o "chain.$extension" --radius 0
        previous=chain.$extension
        copied blocks.jpg $previous
    done
done
accepts blur tagged0.jpg -o stripped.jpg --radius 0 --strip
holds test -z "$(exiftool -EXIF:all -XMP:all -ICC_Profile:all -IPTC:all stripped.jpg)"

# How it is compressed.
for row in '-q 40:40:2 1' '--subsampling 4:4:4:83:1 1' '-q 97 --subsampling 4:2:0:97:2 2'; do
    options=${row%:*:*} rest=${row#"${row%:*:*}"}
    # shellcheck disable=SC2086
    accepts blur plain.jpg -o out.jpg --radius 0 $options
    holds test ":$(identify -format %Q out.jpg):$(exiftool -s3 -n -YCbCrSubSampling out.jpg)" = "$rest"
done
accepts blur plain.jpg -o lossy.webp --radius 0 -q 30
accepts blur plain.jpg -o finer.webp --radius 0
holds test "$(wc -c <lossy.webp)" -lt "$(wc -c <finer.webp)"

# Every kind of pixels. Grey stays grey.
convert scene.png \( +clone -colorspace gray -negate \) -alpha off -compose CopyOpacity -composite rgba.png
convert scene.png -depth 16 -define png:color-type=2 -define png:bit-depth=16 deep.png
convert scene.png -colorspace gray -define png:color-type=0 gray.png
convert rgba.png -colorspace gray -define png:color-type=4 gray_alpha.png
convert rgba.png -type PaletteAlpha -define png:color-type=3 palette.png
convert scene.png -monochrome two.png
convert scene.png -interlace PNG interlaced.png
convert rgba.png -define webp:lossless=true -define webp:exact=true rgba.webp
for input in deep.png gray.png gray_alpha.png palette.png two.png interlaced.png rgba.png rgba.webp; do
    for output in out.png $([ $input = rgba.webp ] && echo out.webp); do
        accepts blur $input -o $output --radius 0
        convert $input -depth 8 expected.png
        same_pixels $output expected.png
        holds test "$(identify -format %A $output)" = "$(identify -format %A expected.png)"
    done
done
accepts blur gray.png -o out.jpg --radius 0
holds test "$(exiftool -s3 -ColorComponents out.jpg)" = 1
accepts blur gray.png -o out.jpg --radius 0 --color '#ff0000' --alpha 50
holds test "$(exiftool -s3 -ColorComponents out.jpg)" = 3
exiftool -q -o gray_profile.png "-icc_profile<=$profiles/default_gray.icc" gray.png
accepts blur gray_profile.png -o out.png
holds test -n "$(exiftool -ICC_Profile:ColorSpaceData out.png)"
run blur gray_profile.png -o out.png --color '#ff0000' --alpha 50
holds grep -q 'warning: .*profile' err.log
# A PNG file's texts and its gamma go on into another one.
exiftool -q -o said.png -PNG:Title=Harbour '-PNG:Comment-de=Blick auf die Brücke' scene.png
convert said.png -set gamma 0.5 said_gamma.png
accepts blur said_gamma.png -o out.png
accepts palette said_gamma.png -o reduced.png
for row in out.png:Gamma:2 out.png:Title:Harbour reduced.png:Gamma:2 reduced.png:Title:Harbour; do
    IFS=: read -r file tag value <<<"$row"
    holds test "$(exiftool -s3 "-PNG:$tag" "$file")" = "$value"
done
accepts blur said.png -o out.png
holds test "$(exiftool -s3 -PNG:Comment-de out.png)" = 'Blick auf die Brücke'
# A JPEG file shows white where the photo is transparent.
convert rgba.png -background white -alpha remove -alpha off expected.png
accepts blur rgba.png -o flat.jpg --radius 0 -q 100 --subsampling 4:4:4
holds test "$(differs MAE flat.jpg expected.png)" -le 1
for command in 'corners --threshold 255' 'stamp --text 1'; do
    # shellcheck disable=SC2086
    accepts $command rgba.png -o out.png
    convert rgba.png -alpha extract alpha.png
    convert out.png -alpha extract out_alpha.png
    same_pixels alpha.png out_alpha.png
done

# CMYK, with and without a profile; with Adobe's mark the file says how much light is left, else how much ink is there.
cmyk() { # FILE, OPTIONS that make it sRGB
    accepts blur "$1" -o out.png --radius 0
    convert "$@" expected.png
    holds test "$(differs MAE out.png expected.png)" = 0
}
ink=(-channel CMYK -negate +channel)
to_srgb=(-intent perceptual -black-point-compensation -profile "$profiles/srgb.icc")
convert scene.png -colorspace CMYK cmyk.jpg
convert scene.png -profile "$profiles/default_rgb.icc" -profile "$profiles/default_cmyk.icc" profile.jpg
for name in cmyk profile; do exiftool -q -o ${name}_ink.jpg -Adobe:all= $name.jpg; done
cmyk cmyk.jpg -colorspace sRGB
cmyk cmyk_ink.jpg "${ink[@]}" -colorspace sRGB
cmyk profile.jpg "${to_srgb[@]}"
cmyk profile_ink.jpg "${ink[@]}" "${to_srgb[@]}"
# Progressive beyond the library's limit.
convert scene.png -resize '4300x3000!' -interlace JPEG -sampling-factor 1x1 -quality 60 large.jpg
accepts blur large.jpg -o out.png --radius 0
convert large.jpg expected.ppm
holds test "$(convert out.png ppm:- | cksum)" = "$(cksum <expected.ppm)"

# Damage that can be stepped over: the picture, one line, and none of it with --strict.
damaged() { # FILE PATTERN
    run blur "$1" -o out.jpg || complain "$1: $(cat err.log)"
    holds grep -qE "^korvane: warning: $1: $2" err.log
    holds test "$(wc -l <err.log)" = 1
    refuses "$1: $2" blur "$1" -o new.jpg --strict
}
head -c -2 plain.jpg >no_end.jpg
{ head -c 2000 plain.jpg; bytes ff d9 00 ff 33; tail -c +2006 plain.jpg; } >spoilt.jpg
damaged no_end.jpg 'damaged JPEG: '
damaged spoilt.jpg 'damaged JPEG: '
head -c -30 rgba.png >cut.png
head -c 300 rgba.webp >cut.webp
{ head -c 200 rgba.png; bytes 00 00 00; tail -c +204 rgba.png; } >spoilt.png
for file in cut.png spoilt.png cut.webp; do
    refuses "cannot read $file: " blur $file -o new.png
done

# Pipes.
accepts blur - -o - <plain.jpg
mv out.log piped.jpg
accepts blur plain.jpg -o direct.jpg
holds cmp -s piped.jpg direct.jpg
accepts blur - -o - --format png --radius 0 <plain.jpg
mv out.log piped.png
same_pixels piped.png plain.jpg
mkfifo in.fifo out.fifo
timeout 60 sh -c 'cat plain.jpg >in.fifo' &
timeout 60 cat out.fifo >from_fifo.jpg &
accepts blur in.fifo -o out.fifo
wait
holds cmp -s from_fifo.jpg direct.jpg
accepts blur plain.jpg -o /dev/stdout
holds cmp -s out.log direct.jpg

# What stands at the target. Its permissions, its links and its other names stay.
cp plain.jpg target.jpg && chmod 640 target.jpg && ln target.jpg hard.jpg && ln -s target.jpg soft.jpg
for target in target.jpg hard.jpg soft.jpg; do
    accepts blur scene.png -o $target --radius 0
    holds cmp -s target.jpg hard.jpg
    cp plain.jpg target.jpg
done
holds test "$(stat -c '%a %h' target.jpg)" = '640 2'
holds test -L soft.jpg
cp plain.jpg alone.jpg && chmod 604 alone.jpg
accepts blur scene.png -o alone.jpg
holds test "$(stat -c %a alone.jpg)" = 604
(umask 027 && accepts blur scene.png -o masked.jpg && holds test "$(stat -c %a masked.jpg)" = 640 && exit $failures) ||
    failures=$((failures + 1))
ln -s nothing dangling.jpg
refuses 'link to nothing' blur scene.png -o dangling.jpg
refuses 'exists already' blur scene.png -o alone.jpg -n
accepts blur scene.png -o "$(printf 'x%.0s' {1..251}).jpg" --no-clobber
# A large file fails while it is written, a small one only in the last flush. A profile of ./dev coverage would
# meet the limit as well.
export LLVM_PROFILE_FILE=/dev/null
for size in 640x480 80x45; do
    for target in hard.jpg alone.jpg; do
        (failures=0; ulimit -f 2; refuses "cannot write $target: " scene $target --size $size; exit $failures) ||
            failures=$((failures + 1))
    done
done

holds test -z "$(find . -name '.korvane-*')"

finish
