#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Makes the calls of calls.txt, which says how to read it.
table=$(realpath "$(dirname "$0")/calls.txt")
source "$(dirname "$0")/checks.sh"
unset DISPLAY WAYLAND_DISPLAY

accepts scene scene.jpg --size 320x180
accepts scene small.jpg --size 61x39
accepts scene narrow.jpg --size 7x41
accepts scene thin.jpg --size 64x4
accepts scene slim.jpg --size 160x180
accepts scene table.png --size 4096x64
convert scene.jpg scene.webp
convert small.jpg old.gif
convert scene.jpg -colorspace gray gray.png
exiftool -q -o turned.jpg -Orientation#=6 -Make=Korvane -GPSLatitude=47.3 -GPSLatitudeRef=N scene.jpg
: >empty.jpg
echo 'not a photo' >text.jpg
head -c 20 scene.jpg >header.jpg
head -c "$(($(wc -c <scene.jpg) / 2))" scene.jpg >half.jpg
printf '\xff\xd8\xff\xd8' >twice.jpg
printf '1,2\n3,4\n' >track.csv
mkdir folder folder.jpg

# does PATTERN ARGUMENTS...: exit code 0, nothing on standard error, a line of standard output that the extended regular
# expression matches, and no file but a picture called new.*, when the call names one.
does() {
    local pattern=$1 before named file
    shift
    before=$(snapshot)
    accepts "$@"
    grep -qaE "$pattern" out.log || [ -z "$pattern" ] || complain "$*: printed $(head -c 300 out.log)"
    named=$(printf '%s\n' "$@" | grep '^new\.')
    for file in $named; do
        identify "$file" >/dev/null 2>&1 || complain "$*: $file is no picture"
        rm -f "$file"
    done
    [ "$(snapshot)" = "$before" ] || complain "$*: changed the folder"
}

calls=0
while IFS= read -r line; do
    [[ $line == [02]\ * ]] || continue
    code=${line:0:1} rest=${line:2}
    pattern=${rest%% ;; *} rest=${rest#* ;; }
    call=${rest%% ;; *} values=
    [[ $rest != *' ;; '* ]] || values=${rest#* ;; }
    eval "values=($values)"
    for value in "${values[@]-}"; do
        eval "arguments=($call)"
        calls=$((calls + 1))
        if [ "$code" = 0 ]; then
            does "${pattern//%/$value}" "${arguments[@]//%/$value}"
        else
            refuses "${pattern//%/$value}" "${arguments[@]//%/$value}"
        fi
    done
done <"$table"
echo "$calls calls"
holds test $calls -ge 250
finish
