#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# A folder of photos over two machines, as docs/batch.md does it: interrupted, resumed, with one photo that fails first.
# The machines are two ssh servers on the loopback address, with keys and home folders of their own.
source "$(dirname "$0")/checks.sh"

stop() {
    for host in one two; do
        ssh -F ssh_config -O exit $host 2>/dev/null
        [ -z "${servers[$host]:-}" ] || kill "${servers[$host]}"
    done
    rm -rf "$folder"
}
declare -A servers
trap stop EXIT

# serve HOST: a server on a free port, whose commands run in a home folder of its own.
serve() {
    local port
    mkdir -p "$1/home"
    for _ in $(seq 20); do
        port=$((20000 + RANDOM % 20000))
        cat >"$1/sshd_config" <<END
Port $port
ListenAddress 127.0.0.1
HostKey $folder/host_key
AuthorizedKeysFile $folder/key.pub
PidFile none
StrictModes no
UsePAM no
PermitRootLogin prohibit-password
PasswordAuthentication no
SetEnv HOME=$folder/$1/home "TSAN_OPTIONS=${TSAN_OPTIONS:-}"
ForceCommand cd $folder/$1/home && exec sh -c "\$SSH_ORIGINAL_COMMAND"
END
        /usr/sbin/sshd -D -e -f "$folder/$1/sshd_config" 2>"$1/sshd.log" &
        servers[$1]=$!
        while kill -0 $! 2>/dev/null; do
            if grep -q 'Server listening' "$1/sshd.log"; then
                printf 'Host %s\n Port %s\n' "$1" "$port" >>ssh_config
                return
            fi
            sleep 0.05
        done
    done
    complain "no ssh server: $(cat "$1/sshd.log")"
    finish
}

# As root the server wants this folder, which its own start script makes.
[ "$(id -u)" != 0 ] || mkdir -p /run/sshd
for key in key host_key; do ssh-keygen -q -t ed25519 -N '' -f $key; done
serve one
serve two
cat >>ssh_config <<END
Host *
 HostName 127.0.0.1
 IdentityFile $folder/key
 IdentitiesOnly yes
 UserKnownHostsFile $folder/known_hosts
 StrictHostKeyChecking accept-new
 LogLevel ERROR
 ControlMaster auto
 ControlPath $folder/%C
 ControlPersist 60
END
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
