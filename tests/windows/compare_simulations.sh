#!/usr/bin/env bash
# compare_simulations.sh WORK NATIVE WINDOWS RUNNER...: whether the program for Windows, run by RUNNER, simulates
# byte for byte what the native one does. It stands alone in a folder then, so its filters are the registered
# ones. Leaves all files in WORK; exits 1 when two differ.
set -euo pipefail
work=$1 native=$2 windows=$3
runner=("${@:4}")
samples=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../samples" && pwd)

rm -rf "$work"
mkdir -p "$work/program"
cp "$windows" "$work/program/"
windows=$work/program/${windows##*/}

# Done or, with status 3, packets were lost for good.
run() { "$@" || (($? == 3)); }

simulate() { # FOLDER OPTIONS COMMAND...
    mkdir -p "$1"
    cp "$samples/sample.ts" "$1/in.ts"
    (
        cd "$1"
        read -ra options <<<"$2"
        run "${@:3}" simulate in.ts "${options[@]}" --json figures.json --output out.ts >stdout
        run "${@:3}" simulate in.ts "${options[@]}" --json - --output out.pcap >json
    )
}

count=0
while read -r options; do
    count=$((count + 1))
    echo "== simulate $options"
    simulate "$work/$count/native" "$options" "$native"
    simulate "$work/$count/windows" "$options" "${runner[@]}" "$windows"
    diff -r "$work/$count/native" "$work/$count/windows"
done <<'CASES'
--mode both --columns 10 --rows 10 --loss 0.03
--mode both --columns 5 --rows 5 --loss 0.05 --burst 4 --reorder 15 --duplicate 0.05 --seed 3
--mode row --columns 8 --rows 4 --burst 5 --seed 7 --guard off
--mode column --columns 1 --rows 20 --loss 0.01 --fec-loss 0.2 --seed 11
CASES
