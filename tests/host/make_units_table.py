#!/usr/bin/env python3
"""Prints units_table.txt: the units that ffmpeg finds in samples/streams (make_units_table.py > units_table.txt).

A line is a file, what its numbers are, and the sizes. "units": every unit, NAL units without start code and
zeros behind them. "groups": bytes of what ffmpeg puts into one packet, each some whole units.
"""

import subprocess
from pathlib import Path

STREAMS = Path(__file__).resolve().parents[2] / "samples" / "streams"
# ffmpeg's packets are single units of these; of others a packet has a picture's headers too.
WHOLE = {".aac": "aac", ".latm": "loas", ".mp2": "mp3", ".ac3": "ac3", ".eac3": "eac3", ".m2v": "mpegvideo",
         ".263": "h263"}
GROUPED = {".m4v": "m4v"}
NAL = {".264": "h264", ".265": "hevc"}


def packets(path, demuxer):
    command = ["ffprobe", "-v", "error", "-f", demuxer, "-show_entries", "packet=size", "-of", "csv=p=0", path]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.replace(",", "").split()


def nal_sizes(path, demuxer):
    """MP4 holds each NAL unit behind its length; the first zero of a start code may have stayed with it."""
    command = ["ffmpeg", "-v", "error", "-f", demuxer, "-i", path, "-c", "copy", "-f", "mp4", "-movflags",
               "frag_keyframe+empty_moov", "-tag:v", "avc3" if demuxer == "h264" else "hev1", "-"]
    data = subprocess.run(command, check=True, capture_output=True).stdout
    sizes = []
    while data:
        size, kind = int.from_bytes(data[:4], "big"), data[4:8]
        body = data[8:size] if kind == b"mdat" else b""
        while body:
            length = int.from_bytes(body[:4], "big")
            sizes.append(len(body[4 : 4 + length].rstrip(b"\0")))
            body = body[4 + length :]
        data = data[size:]
    return sizes


version = subprocess.run(["ffmpeg", "-version"], check=True, capture_output=True, text=True).stdout.split()[2]
print(f"# Made by make_units_table.py, ffmpeg {version}.")
for path in sorted(STREAMS.iterdir()):
    if path.suffix in NAL:
        print(path.name, "units", *nal_sizes(path, NAL[path.suffix]))
    elif path.suffix in WHOLE:
        print(path.name, "units", *packets(path, WHOLE[path.suffix]))
    elif path.suffix in GROUPED:
        print(path.name, "groups", *packets(path, GROUPED[path.suffix]))
