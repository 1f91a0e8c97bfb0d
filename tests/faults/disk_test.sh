# SPDX-License-Identifier: Apache-2.0
# disk_test.sh PROGRAM [mounts]: disks as they are. With `mounts` a full and a read-only one, which only this script sees;
# otherwise one with a limit, and a folder that goes away.
part=${2:-}
if [ "$part" = mounts ]; then
    said=$(unshare --mount --map-root-user mount -t tmpfs korvane /tmp 2>&1) ||
        { echo "SKIPPED, full and read-only disks: no mounts here: $said"; exit 77; }
    exec unshare --mount --map-root-user bash "$0" "$1" mounted
fi
set -- "$1"
source "$(dirname "$0")/../tools/checks.sh"

accepts scene in.png --size 300x200
if [ "$part" = mounted ]; then
    mkdir disk
    holds mount -t tmpfs -o size=256k korvane disk
    head -c 1000 in.png >disk/old.png
    cp disk/old.png disk/linked.png
    ln disk/linked.png disk/other.png
    head -c 1000000 /dev/zero >disk/filler 2>/dev/null
    for output in new.png old.png linked.png; do
        refuses "cannot write disk/$output: No space left" blur in.png -o disk/$output
    done
    rm disk/filler
    accepts blur in.png -o disk/linked.png
    holds cmp -s disk/linked.png disk/other.png
    mount -o remount,ro disk
    for output in new.png old.png linked.png; do
        refuses "cannot write disk/$output: Read-only file system" blur in.png -o disk/$output
    done
    umount disk
    finish
fi

# A file may not grow beyond 8 KiB: real short writes. The profile of ./dev coverage would meet the limit as well.
(ulimit -f 8; export LLVM_PROFILE_FILE=/dev/null
    refuses 'cannot write limited.png: File too large' blur in.png -o limited.png; exit $failures) ||
    complain 'with a limit of the size'

# The folder goes while the photo is on its way.
mkfifo slow.png
mkdir gone
"${program[@]}" blur slow.png -o gone/new.png >out.log 2>err.log &
exec 3>slow.png
rmdir gone
cat in.png >&3
exec 3>&-
wait $!
holds test $? = 2
holds test "$(cat err.log)" = 'korvane: cannot write gone/new.png: No such file or directory'
holds test ! -e gone
finish
