#!/bin/sh
# two_networks.sh PROGRAM: run in a network namespace of its own (unshare -rn), makes another one at the end of a
# cable and sends in.ts to it: over IPv6, to groups of both families, to a source-specific group by the right source
# and by a wrong one. Each receiver's output goes to NAME.ts.
set -eu
program=$1

unshare -n sleep 60 &
other=$!
trap 'kill $other' EXIT
# Until it has a namespace of its own.
while [ "$(readlink /proc/$other/ns/net)" = "$(readlink /proc/self/ns/net)" ]; do sleep 0.1; done
there() { nsenter -t $other -n "$@"; }

ip link add near type veth peer name far netns $other
for side in near far; do
    on=
    host=1
    if [ $side = far ]; then
        on=there
        host=2
    fi
    $on ip addr add 10.99.0.$host/24 dev $side
    $on ip addr add fd99::$host/64 dev $side nodad
    $on ip link set $side up
done
# Until the cable carries IPv6.
while [ -n "$(ip -6 addr show dev near tentative)$(there ip -6 addr show dev far tentative)" ]; do sleep 0.1; done

receive() { # NAME ADDRESS [OPTION...]
    name=$1
    address=$2
    shift 2
    there timeout -s INT 7 "$program" receive --from "$address" "$name.ts" "$@" 2>"$name.txt" &
    receivers="${receivers-} $!"
}
send() { # ADDRESS [OPTION...]
    address=$1
    shift
    "$program" send in.ts --to "$address" --preset low-delay --bitrate 8M --dscp 34 "$@" 2>>send.txt &
    senders="${senders-} $!"
}

receive ipv6 '[fd99::2]:5004'
receive group4 239.99.1.1:5104 --interface far
receive group6 '[ff15::99]:5204' --interface far
receive source 232.99.1.1:5304 --interface far --source 10.99.0.1
receive stranger 232.99.1.2:5404 --interface far --source 10.99.0.77
# Until each has said its first line.
for name in ipv6 group4 group6 source stranger; do while [ ! -s $name.txt ]; do sleep 0.1; done; done
send '[fd99::2]:5004'
send 239.99.1.1:5104 --interface near --ttl 2
send '[ff15::99]:5204' --interface near --ttl 2
send 232.99.1.1:5304 --interface near
send 232.99.1.2:5404 --interface near
for sender in $senders; do wait "$sender"; done
# timeout tells that it ended them.
for receiver in $receivers; do wait "$receiver" || [ $? = 124 ]; done
