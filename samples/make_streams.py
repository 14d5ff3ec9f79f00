#!/usr/bin/env python3
"""Makes the streams that ffmpeg doesn't make, some out of those it made, into the folder named.

HE-AAC: no free encoder for it is packaged, so these streams are AAC LC frames at half the sample rate under
an HE configuration (ISO/IEC 14496-3, 1.6.5: SBR is signalled, and a frame without SBR data is upsampled).
"""

import sys
from pathlib import Path

FOLDER = Path(sys.argv[1])


class Bits:
    """Bits written most significant first."""

    def __init__(self):
        self.text = ""

    def u(self, count, value):
        self.text += format(value, f"0{count}b") if count else ""
        return self

    def ue(self, value):
        digits = format(value + 1, "b")
        self.text += "0" * (len(digits) - 1) + digits
        return self

    def se(self, value):
        return self.ue(2 * value - 1 if value > 0 else -2 * value)

    def align(self, bit="0"):
        self.text += bit * (-len(self.text) % 8)
        return self

    def raw(self, data):
        for byte in data:
            self.u(8, byte)
        return self

    def bytes(self):
        padded = self.text + "0" * (-len(self.text) % 8)
        return bytes(int(padded[i : i + 8], 2) for i in range(0, len(padded), 8))


def store(name, data):
    (FOLDER / name).write_bytes(data)


def load(name):
    return (FOLDER / name).read_bytes()


# AAC


def adts_frames(data):
    frames = []
    while data:
        length = (data[3] & 3) << 11 | data[4] << 3 | data[5] >> 5
        frames.append(data[:length])
        data = data[length:]
    return frames


def crc16(bits):
    """ISO/IEC 11172-3, 2.4.3.1: x^16 + x^15 + x^2 + 1 from all ones on."""
    crc = 0xFFFF
    for bit in bits:
        crc = (crc << 1 ^ (0x8005 if (crc >> 15) != int(bit) else 0)) & 0xFFFF
    return crc


def with_crc(frame):
    """Protected: the header, and the first 192 bits of the only channel element behind its identifier."""
    size = len(frame) + 2
    header = bytearray(frame[:7])
    header[1] &= 0xFE
    header[3] = header[3] & 0xFC | size >> 11
    header[4] = size >> 3 & 0xFF
    header[5] = header[5] & 0x1F | (size & 7) << 5
    element = Bits().raw(frame[7:]).text[3:][:192].ljust(192, "0")
    crc = crc16(Bits().raw(header).text + element)
    return bytes(header) + crc.to_bytes(2, "big") + frame[7:]


FREQUENCIES = {48000: 3, 44100: 4, 24000: 6, 22050: 7}


def config_lc(rate, channels):
    return Bits().u(5, 2).u(4, FREQUENCIES[rate]).u(4, channels).u(3, 0)


def config_he(object_type, core_rate, channels):
    """Explicit, hierarchical: object type 5 (SBR) or 29 (SBR and parametric stereo) around AAC LC."""
    bits = Bits().u(5, object_type).u(4, FREQUENCIES[core_rate]).u(4, channels)
    return bits.u(4, FREQUENCIES[2 * core_rate]).u(5, 2).u(3, 0)


def config_he_compatible(core_rate, channels, parametric_stereo):
    """Explicit, backward compatible: the sync extension behind a configuration of AAC LC."""
    bits = config_lc(core_rate, channels).u(11, 0x2B7).u(5, 5).u(1, 1).u(4, FREQUENCIES[2 * core_rate])
    return bits.u(11, 0x548).u(1, 1) if parametric_stereo else bits


def raw_records(config, frames, rate=None):
    """As rtp_media/audio/aac_raw_record.h lays them out; without times when no rate is given.

    The first one begins a frame late, since a time of 0 is none.
    """
    out = b""
    for index, frame in enumerate(frames):
        time = b"\xff" * 8 if rate is None else ((index + 1) * 1024 * 10_000_000 // rate).to_bytes(8, "big")
        out += time + bytes(4) + len(config.text).to_bytes(4, "big") + config.bytes()
        out += len(frame).to_bytes(4, "big") + frame
    return out


def loas(config, frames, period):
    """A StreamMuxConfig in every `period`th AudioMuxElement (1.7.3)."""
    out = b""
    for index, frame in enumerate(frames):
        bits = Bits().u(1, 0 if index % period == 0 else 1)
        if index % period == 0:
            bits.u(1, 0).u(1, 1).u(6, 0).u(4, 0).u(3, 0)
            bits.text += config.text
            bits.u(3, 0).u(8, 0xFF).u(1, 0).u(1, 0)
        for _ in range(len(frame) // 255):
            bits.u(8, 255)
        bits.u(8, len(frame) % 255).raw(frame).align()
        element = bits.bytes()
        out += (0x2B7 << 13 | len(element)).to_bytes(3, "big") + element
    return out


def make_aac():
    lc = adts_frames(load("aac_lc.aac"))
    core = adts_frames(load("core_24k.aac"))
    store("aac_crc.aac", b"".join(map(with_crc, lc[:20])))
    bare_lc = [frame[7:] for frame in lc[:20]]
    bare_core = [frame[7:] for frame in core[:20]]
    store("aac_lc.aacraw", raw_records(config_lc(48000, 2), bare_lc, 48000))
    store("aac_he_v1.aacraw", raw_records(config_he(5, 24000, 1), bare_core))
    store("aac_he_v2.aacraw", raw_records(config_he(29, 24000, 1), bare_core))
    store("aac_he_v2_compatible.aacraw", raw_records(config_he_compatible(24000, 1, True), bare_core))
    store("aac_he_v1.latm", loas(config_he(5, 24000, 1), bare_core, 5))
    store("aac_he_v2.latm", loas(config_he(29, 24000, 1), bare_core, 5))


# H.264


def escaped(rbsp):
    out = bytearray()
    zeros = 0
    for byte in rbsp:
        if zeros == 2 and byte < 4:
            out.append(3)
            zeros = 0
        out.append(byte)
        zeros = zeros + 1 if byte == 0 else 0
    return bytes(out)


def nal(header, bits):
    rbsp = bits.u(1, 1).align().bytes()
    return b"\0\0\0\1" + bytes([header]) + escaped(rbsp)


def field_slice(frame, bottom):
    """One field of one macroblock, I_PCM; the first field of the first frame is an IDR picture."""
    idr = frame == 0 and not bottom
    bits = Bits().ue(0).ue(7).ue(0).u(4, frame % 16).u(1, 1).u(1, bottom)
    if idr:
        bits.ue(0)
    bits.u(6, (2 * frame + bottom) % 64)
    if idr:
        bits.u(2, 0)
    else:
        bits.u(1, 0)
    bits.se(0).ue(1)
    bits.ue(25).align()
    bits.raw((16 + (x * 7 + y * 11 + frame * 13 + bottom * 5) % 200) for y in range(16) for x in range(16))
    bits.raw((96 + (frame * 9 + bottom * 3 + i) % 64) for i in range(128))
    return nal(0x65 if idr else 0x61, bits)


def make_field_pictures():
    """Field pictures (field_pic_flag 1), which no packaged encoder makes: frames of 16 x 32, 25 a second."""
    sps = Bits().u(8, 77).u(8, 0).u(8, 10).ue(0).ue(0).ue(0).ue(2).ue(1).u(1, 0).ue(0).ue(0).u(1, 0).u(1, 0)
    sps.u(1, 1).u(1, 0).u(1, 1)
    sps.u(1, 0).u(1, 0).u(1, 0).u(1, 0).u(1, 1).u(32, 1).u(32, 50).u(1, 1)
    sps.u(1, 0).u(1, 0).u(1, 0).u(1, 0)
    pps = Bits().ue(0).ue(0).u(1, 0).u(1, 0).ue(0).ue(0).ue(0).u(1, 0).u(2, 0).se(0).se(0).se(0)
    pps.u(1, 1).u(1, 0).u(1, 0)
    out = nal(0x67, sps) + nal(0x68, pps)
    for frame in range(10):
        for bottom in (0, 1):
            out += b"\0\0\0\1\x09\x10" + field_slice(frame, bottom)
    store("h264_fields.264", out)


def make_start_code_lengths():
    stream = load("h264_plain.264").replace(b"\0\0\0\1", b"\0\0\1")
    units = stream.split(b"\0\0\1")[1:15]
    store("h264_3byte.264", b"".join(b"\0\0\1" + unit for unit in units))
    store("h264_4byte.264", b"".join(b"\0\0\0\1" + unit for unit in units))


# Data


def crc32_mpeg(data):
    """ISO/IEC 13818-1, annex A."""
    crc = 0xFFFFFFFF
    for byte in data:
        crc ^= byte << 24
        for _ in range(8):
            crc = (crc << 1 ^ (0x04C11DB7 if crc & 0x80000000 else 0)) & 0xFFFFFFFF
    return crc.to_bytes(4, "big")


def splice_section(command_type, command, descriptors=b""):
    """SCTE 35, 9.6: splice_info_section in the clear, behind the 8 bytes that the stream puts before it."""
    body = bytes([0, 0, 0, 0, 0, 0, 0]) + (0xFFF << 12 | len(command)).to_bytes(3, "big")
    body += bytes([command_type]) + command + len(descriptors).to_bytes(2, "big") + descriptors
    section = b"\xfc" + (0x3000 | len(body) + 4).to_bytes(2, "big") + body
    return section + crc32_mpeg(section)


def splice_time(pts):
    return Bits().u(1, 1).u(6, 0x3F).u(33, pts).bytes()


def make_scte35():
    flags = Bits().u(1, 1).u(1, 1).u(1, 1).u(1, 0).u(4, 15).bytes()
    duration = Bits().u(1, 1).u(6, 0x3F).u(33, 30 * 90000).bytes()
    insert = (7).to_bytes(4, "big") + b"\x7f" + flags + splice_time(900000) + duration
    insert += (1).to_bytes(2, "big") + b"\0\0"
    segmentation = b"CUEI" + (9).to_bytes(4, "big") + b"\x7f\xbf" + b"\x01\x04abcd" + b"\x30\x00\x00"
    descriptors = b"\x02" + bytes([len(segmentation)]) + segmentation
    avail = b"\x00\x08CUEI" + (5).to_bytes(4, "big")
    sections = [
        splice_section(0x00, b""),
        splice_section(0x05, insert, avail),
        splice_section(0x06, splice_time(1800000), descriptors),
        splice_section(0x07, b""),
        splice_section(0xFF, b"MVRTprivate"),
    ]
    store("scte35.bin", b"".join((index * 90000).to_bytes(8, "big") + s for index, s in enumerate(sections)))


def klv_item(value):
    """SMPTE 336: a universal key, the length in BER, the value."""
    length = bytes([len(value)]) if len(value) < 128 else b"\x82" + len(value).to_bytes(2, "big")
    return bytes.fromhex("060e2b34020b01010e01030101000000") + length + value


def make_klv():
    local_set = b"\x02\x08" + (1700000000000000).to_bytes(8, "big") + b"\x03\x07MISSION" + b"\x41\x01\x11"
    store("klv.bin", klv_item(local_set) + klv_item(b"\x0a\x0cA name of it" * 14) + klv_item(local_set))


def make_text():
    document = (
        '<?xml version="1.0" encoding="UTF-8"?>\n<tt xmlns="http://www.w3.org/ns/ttml" xml:lang="en"><body><div>\n'
        '<p begin="{0}.000s" end="{1}.500s">Line {0}, \u00fcber alles</p>\n</div></body></tt>\n'
    )
    store("captions.ttml", "".join(document.format(i, i + 1) for i in range(3)).encode())
    cues = "WEBVTT\n\n" + "".join(f"00:00:0{i}.000 --> 00:00:0{i}.900\nCue {i}\nin two lines\n\n" for i in range(5))
    store("captions.vtt", cues.encode())


def dvb_segment(kind, data, page=1):
    return bytes([0x0F, kind]) + page.to_bytes(2, "big") + len(data).to_bytes(2, "big") + data


def make_dvb_subtitle():
    """ETSI EN 300 743: PES data fields of whole display sets; the second one clears the page."""
    pixels = b"\x10" + bytes([0x08, 0x11, 0x11, 0x11, 0x11, 0x00, 0x00]) + b"\xf0"
    object_data = (0).to_bytes(2, "big") + b"\x01" + len(pixels).to_bytes(2, "big") + bytes(2) + pixels
    region = bytes([0, 0x08, 0, 16, 0, 2, 0x48, 0, 0, 0x0C, 0, 0, 0, 0, 0, 0])
    clut = bytes([0, 0x0F, 0, 0x5F, 0x10, 0x80, 0x80, 0x00, 1, 0x5F, 0xEB, 0x80, 0x80, 0x00])
    shown = [
        dvb_segment(0x14, bytes([0x00, 0x02, 0xCF, 0x02, 0x3F])),
        dvb_segment(0x10, bytes([5, 0x0B, 0, 0, 0, 100, 1, 0])),
        dvb_segment(0x11, region),
        dvb_segment(0x12, clut),
        dvb_segment(0x13, object_data),
        dvb_segment(0x80, b""),
    ]
    cleared = [dvb_segment(0x10, bytes([5, 0x13])), dvb_segment(0x80, b"")]
    fields = [b"\x20\x00" + b"".join(segments) + b"\xff" for segments in (shown, cleared, shown)]
    store("subtitle.dvbsub", b"".join(fields))


def odd_parity(byte):
    return byte | (0x80 if bin(byte & 0x7F).count("1") % 2 == 0 else 0)


HAMMING = [0x15, 0x02, 0x49, 0x5E, 0x64, 0x73, 0x38, 0x2F, 0xD0, 0xC7, 0x8C, 0x9B, 0xA1, 0xB6, 0xFD, 0xEA]


def teletext_unit(kind, row, text):
    """ETSI EN 300 472, 4.3: one line of magazine 8 with its bits in the order of transmission."""
    line = bytes([HAMMING[(row & 1) << 3], HAMMING[row >> 1]]) + bytes(map(odd_parity, text.ljust(40).encode()))
    mirrored = bytes(int(format(byte, "08b")[::-1], 2) for byte in b"\x27" + line)
    return bytes([kind, 0x2C, 0xE0 | 7]) + mirrored


def make_teletext():
    stuffing = b"\xff\x2c" + b"\xff" * 44
    fields = []
    for page in range(4):
        lines = [teletext_unit(0x03, row, f"Page {page}, row {row}") for row in (20, 22)]
        fields.append(b"\x10" + b"".join(lines) + stuffing)
    store("teletext.bin", b"".join(fields))


for make in (make_aac, make_field_pictures, make_start_code_lengths, make_scte35, make_klv, make_text,
             make_dvb_subtitle, make_teletext):
    make()
