#!/usr/bin/env bash
# packetize_seeds.sh FOLDER: seeds for packetize_fuzz, made of the beginnings of the sample streams: the number of
# the stream type, a byte for the cuts, the stream.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../samples"
output=$1
mkdir -p "$output"

declare -A types=(
    [m2v]=0 [mp2]=1 [264]=2 [ac3]=3 [eac3]=3 [aac]=4 [latm]=5 [263]=7 [m4v]=9 [aacraw]=10 [dvbsub]=11 [ts]=14
    [265]=17 [ttml]=18 [vtt]=20 [prores]=21 [teletext.bin]=6 [scte35.bin]=12 [klv.bin]=19)

for file in streams/* sample.ts; do
    name=${file##*/}
    type=${types[${name##*.}]-${types[$name]-}}
    [[ -n $type ]] || continue
    { printf '%b' "$(printf '\\x%02x\\x%02x' "$type" 188)"; head -c 4000 "$file"; } >"$output/$name"
done
