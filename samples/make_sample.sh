#!/usr/bin/env bash
# Makes samples/sample.ts anew: six seconds of H.264 and AAC from ffmpeg's test sources in a transport
# stream of constant rate, PCR every 20 ms. The same ffmpeg gives the same bytes (Debian package: ffmpeg).
set -euo pipefail

output=${1:-"$(dirname "$0")/sample.ts"}

# One thread, since x264's choices depend on how many it has; bitexact, since versions would be written.
ffmpeg -hide_banner -loglevel error -y \
    -f lavfi -i "testsrc2=size=720x576:rate=25:duration=6" \
    -f lavfi -i "sine=frequency=440:beep_factor=4:sample_rate=48000:duration=6" \
    -map 0:v -map 1:a -map_metadata -1 -fflags +bitexact \
    -c:v libx264 -threads:v 1 -preset medium -profile:v main -pix_fmt yuv420p -g 25 \
    -b:v 1600k -minrate 1600k -maxrate 1600k -bufsize 800k -x264-params nal-hrd=cbr -flags:v +bitexact \
    -c:a aac -b:a 96k -ac 2 -flags:a +bitexact \
    -f mpegts -muxrate 2000k -pcr_period 20 -mpegts_flags +resend_headers "$output"
