#!/usr/bin/env bash
# soak.sh [SECONDS [PROGRAM]]: sends 100 Mbit/s through a relay that loses 3 % to a receiver on this machine, for ten
# minutes, and looks at all three meanwhile. Memory and descriptors may not grow after the first tenth of the time,
# nothing may be lost at the sockets, and of a hundred lost packets at most one may be missing in the output.
set -euo pipefail

seconds=${1-600}
program=$(realpath "${2-build/release/bin/mvrtpfec}")
sample=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../samples/sample.ts")
port=${SOAK_PORT-37000}
if [[ ! $seconds =~ ^[1-9][0-9]+$ ]]; then
    echo "soak: '$seconds' is not a number of seconds from 10 on" >&2
    exit 2
fi

folder=$(mktemp -d)
declare -A pids
stop() {
    kill -INT "${pids[@]}" 2>/dev/null || true
    wait "${pids[@]}" 2>/dev/null || true
}
trap 'stop; rm -rf "$folder"' EXIT

start() { # NAME ARGUMENT...
    local name=$1
    shift
    # Set free from the shell, which has background jobs ignore an interrupt.
    (
        trap - INT
        exec "$program" "$@" >"$folder/$name.out" 2>"$folder/$name.txt"
    ) &
    pids[$name]=$!
}

start receive receive --from "127.0.0.1:$((port + 20))" null --json "$folder/figures.jsonl" --log "$folder/receive.log" \
    --metrics "127.0.0.1:$((port + 41))"
sleep 1
start relay relay --from "127.0.0.1:$port" --to "127.0.0.1:$((port + 20))" --loss 0.03 --duplicate 0.001 --reorder 3
start send send "$sample" --to "127.0.0.1:$port" --preset balanced --bitrate 100M --loop

resident() { awk '/^VmRSS:/ { print $2 }' "/proc/$1/status"; }
descriptors() { find "/proc/$1/fd" -mindepth 1 | wc -l; }
look() { totals=$(tail -n 1 "$folder/figures.jsonl" | grep -o '"total":{.*'); }
figure() { # NAME
    grep -o "\"$1\":[0-9]*" <<<"$totals" | cut -d: -f2
}

declare -A settled_memory settled_descriptors
failed=0
complain() {
    echo "soak: $*" >&2
    failed=1
}

begun=$SECONDS
step=$((seconds / 10))
for ((i = 1; i <= 10; ++i)); do
    sleep $((begun + i * step - SECONDS))
    line="$((SECONDS - begun)) s:"
    for name in send relay receive; do
        pid=${pids[$name]}
        if ! kill -0 "$pid" 2>/dev/null; then
            complain "$name has ended: $(tail -n 1 "$folder/$name.txt")"
            exit 1
        fi
        memory=$(resident "$pid")
        open=$(descriptors "$pid")
        line+=" $name $memory kB $open fds,"
        if ((i == 1)); then
            settled_memory[$name]=$memory
            settled_descriptors[$name]=$open
        fi
        # A page here and there is no growth.
        ((memory <= settled_memory[$name] + 512)) || complain "$name has grown from ${settled_memory[$name]} kB to $memory"
        ((open == settled_descriptors[$name])) || complain "$name has $open descriptors, ${settled_descriptors[$name]} before"
    done
    look
    echo "$line received $(figure media_packets) lost $(figure lost_packets) rebuilt $(figure rebuilt_packets)" \
        "for good $(figure lost_for_good_packets)"
done
stop
look

media=$(figure media_packets)
lost=$(figure lost_packets)
rebuilt=$(figure rebuilt_packets)
gone=$(figure lost_for_good_packets)
dropped=$(figure overrun_datagrams)
delivered=$(figure delivered_packets)
((media > seconds * 9000)) || complain "too few packets came: $media"
((lost > media / 50)) || complain "the relay has lost too few: $lost"
((gone * 100 <= lost)) || complain "lost for good: $gone of $lost"
((dropped == 0)) || complain "dropped at the sockets: $dropped"
((failed)) || echo "soak: $media packets in $seconds s, $lost lost, $rebuilt rebuilt, $delivered delivered; nothing grew"
exit $failed
