#pragma once

#include <initializer_list>
#include <span>

#include "rtp_media/bits/emulation_prevention.h"
#include "rtp_media/h264/avc_sps.h"
#include "rtp_media/h264/avc_syntax_writer.h"
#include "tests/rtp_media/chain/collected_packets.h"

namespace mvrtpfec::test {

/// A NAL unit with a 4-byte start code around an RBSP.
inline Bytes avcUnit(std::uint8_t header, std::span<const std::uint8_t> rbsp) {
    Bytes unit{0, 0, 0, 1, header};
    const Bytes protectedRbsp = insertEmulationPrevention(rbsp);
    unit.insert(unit.end(), protectedRbsp.begin(), protectedRbsp.end());
    return unit;
}

/// 25 frames a second of two ticks each, both fields' delays in 5 bits, pictures of frames alone.
inline AvcSps plainSps() {
    AvcSps sps;
    sps.profileIdc = 77;
    sps.levelIdc = 30;
    sps.frameMbsOnly = true;
    sps.picOrderCntType = 2;
    sps.hasVui = true;
    sps.vui.hasTiming = true;
    sps.vui.numUnitsInTick = 1;
    sps.vui.timeScale = 50;
    return sps;
}

inline AvcSps hrdSps() {
    AvcSps sps = plainSps();
    sps.vui.hasNalHrd = true;
    sps.vui.nalHrd.cpbs = {{999, 0, false}};
    sps.vui.nalHrd.bitRateScale = 1;
    sps.vui.nalHrd.initialRemovalDelayLengthMinus1 = 23;
    sps.vui.nalHrd.removalDelayLengthMinus1 = 4;
    sps.vui.nalHrd.outputDelayLengthMinus1 = 4;
    return sps;
}

inline Bytes spsUnit(const AvcSps& sps) {
    return avcUnit(0x67, writeAvcSps(sps));
}

inline Bytes ppsUnit() {
    avcSyntaxWriter pps;
    pps.ue(0);
    pps.ue(0);
    pps.u(2, 0);
    for (int i = 0; i < 3; ++i) pps.ue(0);
    pps.u(3, 0);
    for (int i = 0; i < 3; ++i) pps.se(0);
    pps.u(3, 0);
    return avcUnit(0x68, pps.finish());
}

inline Bytes delimiter() {
    return {0, 0, 0, 1, 9, 0x10};
}

/// An I slice, no reference, of `size` bytes in all.
inline Bytes sliceUnit(std::size_t size = 20, std::uint8_t header = 0x01) {
    avcSyntaxWriter slice;
    slice.ue(0);
    slice.ue(7);
    slice.ue(0);
    slice.u(4, 0);
    Bytes unit = avcUnit(header, slice.finish());
    unit.resize(size, 0x5A);
    return unit;
}

/// SEI messages by hrdSps(): a buffering period, picture timing, or both. `removalBits`: five, and bytes
/// more.
inline Bytes seiUnit(bool bufferingPeriod, std::optional<std::pair<unsigned, unsigned>> timing,
                     unsigned removalBits = 5) {
    avcSyntaxWriter sei;
    if (bufferingPeriod) {
        sei.u(8, 0);
        sei.u(8, 7);
        sei.ue(0);
        sei.u(24, 90000);
        sei.u(24, 0);
        sei.u(7, 0x40);
    }
    if (timing) {
        sei.u(8, 1);
        sei.u(8, (removalBits + 11) / 8);
        sei.u(removalBits, timing->first);
        sei.u(5, timing->second);
        sei.u(6, 0x20);
    }
    return avcUnit(0x06, sei.finish());
}

}  // namespace mvrtpfec::test
