#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Several photos in one call: their names, failures that stay alone, worker processes, interrupts, the progress bar.
source "$(dirname "$0")/checks.sh"

mkdir -p in/2025 in/2026
for i in 1 2 3 4 5; do accepts scene in/2025/$i.jpg --size $((200 + i))x150; done
cp in/2025/1.jpg in/2026/1.jpg
cp in/2025/2.jpg in/2025/untold
accepts scene in/2025/1.png --size 90x60

# plans EXPECTED ARGUMENTS...: the names that a dry run shows, and nothing is made.
plans() {
    local before
    before=$(snapshot)
    accepts blur "${@:2}" --dry-run
    [ "$(sed 's/.* -> //' out.log | tr '\n' ' ')" = "$1 " ] || complain "$*: planned $(cat out.log)"
    [ "$(snapshot)" = "$before" ] || complain "$*: the dry run changed the folder"
}
plans 'out/1.jpg out/2.jpg' in/2025/1.jpg in/2025/2.jpg -o out/
plans 'out/2025/1.jpg out/2026/1.jpg' in/2025/1.jpg "$PWD/in/./2026/1.jpg" -o out/
plans 'out/1.jpg' in/2025/1.jpg in/2026/../2025/1.jpg -o out/
plans 'out/1.jpg out/1.png out/untold.jpg' in/2025/1.jpg in/2025/1.png in/2025/untold -o out/
plans 'out/2.webp out/untold.webp' in/2025/2.jpg in/2025/untold -o out/ --format webp
plans 'in/2025/1.jpg in/2025/2.jpg' in/2025/1.jpg in/2025/2.jpg -o in/2025/
plans 'out.png' in/2025/1.jpg -o out.png
mkdir -p nested/nested
cp in/2025/1.jpg nested/1.jpg
cp in/2025/1.jpg nested/nested/1.jpg
refuses '1.jpg and in/2025/1.png would both become out/1.webp' blur in/2025/1.* -o out/ --format webp
refuses 'nested/nested/1.jpg would become ./nested/1.jpg, which is one of' blur nested/1.jpg nested/nested/1.jpg -o ./
# What is wrong for every photo is said once.
for arguments in 'blur --method median' 'blur --color redd' 'stamp --text x' 'filter none --set a=1' 'filter sepia'; do
    # shellcheck disable=SC2086
    refuses '' $arguments in/2025/?.jpg -o new/deep/
done

# failed LINES ARGUMENTS...: exit code 1, and so many lines on standard error.
failed() {
    run "${@:2}"
    local code=$?
    [ $code = 1 ] || complain "${*:2}: exit code $code instead of 1"
    [ "$(wc -l <err.log)" = "$1" ] || complain "${*:2}: said $(cat err.log)"
}
echo 'not a photo' >in/2025/bad.jpg
mkdir single
for photo in in/2025/?.*; do accepts blur "$photo" -o "single/${photo##*/}"; done
for jobs in 1 3; do
    failed 2 blur in/2025/?.* in/2025/bad.jpg in/2025/missing.jpg -o "many/$jobs/" -j $jobs
    holds grep -q 'cannot read in/2025/bad.jpg: ' err.log
    holds grep -q 'cannot read in/2025/missing.jpg: ' err.log
    holds diff -r single "many/$jobs"
done
failed 6 blur in/2025/?.jpg in/2025/bad.jpg -o many/1/ -n
failed 1 blur in/2025/?.jpg in/2025/missing.jpg -o new/ --dry-run
accepts scene small.jpg --size 9x9
failed 1 stamp in/2025/?.jpg small.jpg -o stamped/ --text 2026-01-02
holds grep -q "small.jpg: '2026.*does not fit" err.log

# Reports name their photos.
accepts corners in/2025/[12].jpg --json
holds test "$(jq -r .file out.log | sort | tr '\n' ' ')" = 'in/2025/1.jpg in/2025/2.jpg '
accepts palette in/2025/[12].jpg -n 3 -o reduced/ --format png
holds test "$(grep -cxE 'in/2025/[12].jpg: #[0-9A-F]{6}' out.log)" = 6
holds identify reduced/1.png reduced/2.png >/dev/null

# The bar is for a terminal, its file names are not.
holds test ! -s err.log
on_terminal() { script -qec "'${program[0]}' blur in/2025/?.jpg in/2025/bad.jpg -o bar/ -j 1 $*" /dev/null; }
holds grep -qE '\] 5 of 6, [0-9.]+ a second, 0:0[0-9] left' <(on_terminal)
holds test "$(on_terminal --quiet | tr -d '\r')" = \
    'korvane: cannot read in/2025/bad.jpg: it is not a JPEG, PNG or WebP file'

# A worker that ends in the middle of a photo fails this photo only. One that waits for a pipe can be ended for certain.
mkfifo in/2025/wait.jpg
start() {
    "${program[@]}" blur in/2025/wait.jpg in/2025/?.jpg -o "$1" -j 1 >out.log 2>err.log &
    batch=$!
    until worker=$(pgrep -P $batch) || ! kill -0 $batch; do sleep 0.02; done
}
start killed/
# What a worker or another child starts with: no signal is blocked.
holds test "$(cat /proc/$batch/status /proc/"$worker"/status | grep -c 'SigBlk:.0*$')" = 2
kill -KILL "$worker"
wait $batch
holds test $? = 1
holds grep -qx 'korvane: in/2025/wait.jpg: its worker was ended by a signal: Killed' err.log
holds diff -r <(cd killed && md5sum ?.jpg) <(cd single && md5sum ?.jpg)

# The thread sanitizer keeps a signal back for as long as a call waits.
[ -z "${TSAN_OPTIONS:-}" ] || finish

# An interrupt, of the batch alone or as a terminal sends it, ends all processes, and what is there is whole.
start stopped/
kill -TERM $batch
wait $batch
holds test $? = 143
holds test ! -e "/proc/$worker"
holds test -z "$(cat err.log)$(ls stopped)"
start stopped/
kill -KILL $batch
wait $batch 2>/dev/null
for try in $(seq 100); do [ -e "/proc/$worker" ] && sleep 0.02; done
holds test ! -e "/proc/$worker"
cp in/2025/1.jpg in/2025/6.jpg
for try in $(seq 30); do
    timeout -s "$([ $((try % 2)) = 0 ] && echo HUP || echo INT)" "0.0$((try / 3))$((try % 10))" \
        "${program[@]}" blur in/2025/[1-5].jpg -o stopped/ -j 3 2>err.log
    holds test ! -s err.log
    for photo in stopped/*; do
        [ ! -e "$photo" ] || holds cmp -s "$photo" "single/${photo##*/}"
    done
    rm -rf stopped
done
holds test -z "$(find . -name '.korvane-*')"

finish
