#!/usr/bin/env bash
# Makes samples/streams/ anew: small elementary streams from ffmpeg's test sources, and by make_streams.py
# what ffmpeg doesn't make. The same ffmpeg gives the same bytes (Debian packages: ffmpeg, python3).
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
output=${1:-"$here/streams"}
mkdir -p "$output"
cd "$output"

# One thread, since encoders' choices depend on how many they have; bitexact, since versions would be written.
video() { # SIZE RATE SECONDS FILE OPTION...
    local size=$1 rate=$2 seconds=$3 file=$4
    shift 4
    ffmpeg -hide_banner -loglevel error -y -f lavfi -i "testsrc2=size=$size:rate=$rate:duration=$seconds" \
        -map_metadata -1 -fflags +bitexact -flags:v +bitexact -threads:v 1 -pix_fmt yuv420p "$@" "$file"
}
audio() { # RATE CHANNELS SECONDS FILE OPTION...
    local rate=$1 channels=$2 seconds=$3 file=$4
    shift 4
    ffmpeg -hide_banner -loglevel error -y \
        -f lavfi -i "sine=frequency=440:beep_factor=4:sample_rate=$rate:duration=$seconds" \
        -map_metadata -1 -fflags +bitexact -flags:a +bitexact -ac "$channels" "$@" "$file"
}
h264() { # X264-PARAMETERS FILE OPTION...
    local parameters=$1 file=$2
    shift 2
    video 176x144 25 1 "$file" -c:v libx264 -preset medium -g 12 -b:v 180k \
        -x264-params "threads=1:lookahead-threads=1:$parameters" "$@" -f h264
}

# H.264: x264 writes VUI timing everywhere, and 4-byte start codes before the first unit of a picture and
# before parameter sets.
h264 slices=4:bframes=0:aud=1 h264_slices_aud.264 -bsf:v filter_units=remove_types=6
h264 bframes=3:b-pyramid=normal:nal-hrd=vbr:vbv-maxrate=220:vbv-bufsize=220:pic-struct=1 h264_bframes_hrd.264
h264 bframes=2:slices=2:tff=1:nal-hrd=cbr:vbv-maxrate=180:vbv-bufsize=180:aud=1 h264_interlaced_hrd.264 \
    -vf "tinterlace=mode=interleave_top" -r 12.5 -flags:v +ildct+ilme+bitexact
h264 bframes=0:keyint=12 h264_plain.264 -bsf:v filter_units="remove_types=6|9"
h264 bframes=0 h264_large.264 -b:v 900k -t 0.4

# HEVC, with and without delimiters and SEI.
hevc() { # X265-PARAMETERS FILE
    video 176x144 25 1 "$2" -c:v libx265 -preset fast -b:v 150k -f hevc \
        -x265-params "log-level=none:frame-threads=1:keyint=12:ctu=16:info=0:$1"
}
hevc bframes=0:slices=2:aud=1:pools=1:wpp=1 hevc_slices_aud.265
hevc bframes=3:pools=none:wpp=0:hrd=1:vbv-maxrate=200:vbv-bufsize=200 hevc_bframes_hrd.265

video 176x144 30000/1001 1 h263.263 -c:v h263 -b:v 160k -g 12 -f h263
video 704x576 25 0.08 h263_4cif.263 -c:v h263 -b:v 900k -g 5 -f h263
video 176x144 25 1 mpeg4.m4v -c:v mpeg4 -b:v 200k -g 12 -bf 0 -f m4v
video 176x144 25 1 mpeg4_bframes.m4v -c:v mpeg4 -b:v 200k -g 12 -bf 2 -f m4v
video 176x144 25 1 mpeg2.m2v -c:v mpeg2video -b:v 250k -g 12 -bf 2 -f mpeg2video
video 176x144 25 0.4 mpeg2_interlaced.m2v -c:v mpeg2video -b:v 250k -g 12 -bf 2 -flags:v +ildct+ilme+bitexact \
    -f mpeg2video
# A frame is a picture of its own; the raw stream is the frames one behind the other.
video 176x144 25 0.12 prores.prores -c:v prores_ks -profile:v proxy -pix_fmt yuv422p10le -f rawvideo

audio 48000 2 1 aac_lc.aac -c:a aac -b:a 96k -f adts
audio 24000 1 1 core_24k.aac -c:a aac -b:a 32k -f adts
audio 44100 2 1 aac_latm.latm -c:a aac -b:a 64k -f latm
audio 48000 2 0.5 mp2.mp2 -c:a mp2 -b:a 128k -f mp2
audio 48000 2 0.5 ac3.ac3 -c:a ac3_fixed -b:a 128k -f ac3
audio 48000 2 0.5 eac3.eac3 -c:a eac3 -b:a 96k -f eac3

python3 "$here/make_streams.py" .
rm core_24k.aac
ls -l
