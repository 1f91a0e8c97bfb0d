#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# A folder of photos over two machines, as docs/batch.md does it: interrupted, resumed, with one photo that fails first.
# The machines are two ssh servers, started by the connections to them, with home folders of their own.
source "$(dirname "$0")/checks.sh"

# As root the server wants this folder, which its own start script makes.
[ "$(id -u)" != 0 ] || mkdir -p /run/sshd
for key in key host_key; do ssh-keygen -q -t ed25519 -N '' -f $key; done
for host in one two; do
    mkdir -p $host/home
    cat >$host/sshd_config <<END
HostKey $folder/host_key
AuthorizedKeysFile $folder/key.pub
StrictModes no
UsePAM no
SetEnv HOME=$folder/$host/home "TSAN_OPTIONS=${TSAN_OPTIONS:-}"
ForceCommand cd $folder/$host/home && exec sh -c "\$SSH_ORIGINAL_COMMAND"
END
done
cat >ssh_config <<END
Host *
 ProxyCommand /usr/sbin/sshd -i -f $folder/%h/sshd_config 2>/dev/null
 IdentityFile $folder/key
 IdentitiesOnly yes
 UserKnownHostsFile $folder/known_hosts
 StrictHostKeyChecking accept-new
 LogLevel ERROR
 ControlMaster auto
 ControlPath $folder/%C
 ControlPersist 60
END
trap 'for host in one two; do ssh -F ssh_config -O exit $host 2>/dev/null; done; rm -rf "$folder"' EXIT
for host in one two; do
    holds test "$(ssh -F ssh_config $host pwd)" = "$folder/$host/home"
done

mkdir -p photos/trip
count=24
for i in $(seq $count); do accepts scene photos/trip/$i.jpg --size $((40 + i))x30; done
accepts blur photos/trip/*.jpg -o expected/photos/trip/
mv photos/trip/7.jpg whole.jpg
head -c 100 whole.jpg >photos/trip/7.jpg

find photos -name '*.jpg' >list
over_machines() {
    HOME=$folder parallel --will-cite -a list --ssh "ssh -F $folder/ssh_config" -S 2/one,2/two \
        --joblog batch.log --resume-failed --retries 3 --workdir ... --transferfile {} --return blurred/{} --cleanup \
        "$(printf '%q ' "${program[@]}") blur {} -o blurred/{//}/" 2>parallel.log
}
done_photos() { awk 'NR > 1 && $7 == 0' batch.log 2>/dev/null | wc -l; }
over_machines &
for _ in $(seq 200); do
    [ "$(done_photos)" -lt 3 ] || break
    sleep 0.1
done
kill -INT "$(pgrep -P $! -x parallel)"
wait $!
holds test "$(done_photos)" -lt $((count - 1))
over_machines
holds test $? = 1
holds test "$(done_photos)" = $((count - 1))
holds test "$(ls blurred/photos/trip | wc -l)" = $((count - 1))
mv whole.jpg photos/trip/7.jpg
over_machines || complain "the last photo: $(cat parallel.log)"
holds test "$(done_photos)" = $count
holds test "$(awk 'NR > 1 { print $2 }' batch.log | sort -u | tr '\n' ' ')" = 'one two '
holds diff -r expected blurred

finish
