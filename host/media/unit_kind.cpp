#include "host/media/unit_kind.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <fmt/format.h>

#include "core/big_endian.h"
#include "host/media/nal_type_names.h"
#include "rtp_media/bits/start_code_search.h"
#include "rtp_media/data/nal_scte35.h"

namespace mvrtpfec {

namespace {

using Bytes = std::span<const std::uint8_t>;

std::string numbered(unsigned number, std::string_view name) {
    return fmt::format("{} {}", number, name);
}

std::string nalKind(NAL& unit) {
    const auto& header = unit.header();
    if (!header) return "no header";
    if (unit.streamType() == StreamType::hevc)
        return numbered(header->value >> 1 & 0x3FU, hevcTypeName(header->value >> 1 & 0x3FU));
    return numbered(header->value & 0x1FU, h264TypeName(header->value & 0x1FU));
}

/// picture_coding_type (ISO/IEC 13818-2, table 6-12) of the picture header in the unit.
std::string mpeg2Kind(Bytes bytes) {
    constexpr std::size_t pictureHeaderSize = 6;
    constexpr std::string_view types = "?IPBD???";
    bool hasSequence = false;
    for (std::size_t at = findStartCode(bytes); at < bytes.size(); at = findStartCode(bytes)) {
        bytes = bytes.subspan(at);
        if (bytes.size() >= 4 && bytes[3] == 0xB3) hasSequence = true;
        if (bytes.size() >= pictureHeaderSize && bytes[3] == 0x00)
            return fmt::format("{} picture{}", types[bytes[5] >> 3 & 7U], hasSequence ? ", sequence" : "");
        bytes = bytes.subspan(3);
    }
    return "headers only";
}

/// ISO/IEC 14496-2, table 6-3.
std::string mpeg4Kind(NAL& unit) {
    const auto& header = unit.header();
    if (!header) return "no header";
    const unsigned code = header->value;
    const std::size_t behind = static_cast<std::size_t>(header->startCodeLength) + 1;
    const auto name = [&]() -> std::string {
        if (code < 0x20) return "video object";
        if (code < 0x30) return "video object layer";
        switch (code) {
            case 0xB0:
                return "visual object sequence";
            case 0xB1:
                return "visual object sequence end";
            case 0xB2:
                return "user data";
            case 0xB3:
                return "group of VOP";
            case 0xB5:
                return "visual object";
            case 0xB6:
                return behind < unit.size() ? fmt::format("{}-VOP", "IPBS"[unit.bytes()[behind] >> 6])
                                            : "VOP";
            default:
                return "other";
        }
    };
    return fmt::format("{:02X} {}", code, name());
}

/// ITU-T H.263, 5.1.3.
std::string h263Kind(Bytes bytes) {
    constexpr unsigned extendedType = 7;
    if (bytes.size() < 5) return "cut off";
    if ((bytes[4] >> 2 & 7U) == extendedType) return "picture with PLUSPTYPE";
    return (bytes[4] & 2U) != 0 ? "INTER picture" : "INTRA picture";
}

std::string adtsKind(Bytes bytes) {
    constexpr std::array names{"Main", "LC", "SSR", "LTP"};
    if (bytes.size() < 3) return "cut off";
    return fmt::format("AAC {}{}", names.at(bytes[2] >> 6), (bytes[1] & 1U) == 0 ? ", CRC" : "");
}

/// useSameStreamMux (ISO/IEC 14496-3, 1.7.3.1) stands behind the LOAS header.
std::string latmKind(Bytes bytes) {
    if (bytes.size() < 4) return "cut off";
    return (bytes[3] & 0x80U) == 0 ? "frame, configuration" : "frame";
}

std::string layerKind(Bytes bytes) {
    constexpr std::array names{"reserved layer", "layer III", "layer II", "layer I"};
    return bytes.size() < 2 ? "cut off" : names.at(bytes[1] >> 1 & 3U);
}

std::string ac3Kind(Bytes bytes) {
    constexpr unsigned lastAc3 = 10;
    if (bytes.size() < 6) return "cut off";
    return bytes[5] >> 3U <= lastAc3 ? "AC-3" : "E-AC-3";
}

std::string pidKind(Bytes bytes) {
    if (bytes.size() < 3) return "cut off";
    return fmt::format("PID {:#06x}", readBigEndian16(&bytes[1]) & 0x1FFFU);
}

/// splice_command_type (ANSI/SCTE 35, table 7).
std::string spliceKind(const NAL& unit) {
    const auto* const message = dynamic_cast<const NALSCTE35*>(&unit);
    if (message == nullptr) return "section";
    switch (message->section.commandType) {
        case 0x00:
            return "splice_null";
        case 0x04:
            return "splice_schedule";
        case 0x05:
            return "splice_insert";
        case 0x06:
            return "time_signal";
        case 0x07:
            return "bandwidth_reservation";
        case 0xFF:
            return "private_command";
        default:
            return "section";
    }
}

std::string webVttKind(Bytes bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.starts_with("WEBVTT") || text.starts_with("\xEF\xBB\xBFWEBVTT")) return "header";
    if (text.starts_with("NOTE")) return "note";
    if (text.starts_with("STYLE")) return "style";
    return text.starts_with("REGION") ? "region" : "cue";
}

}  // namespace

std::string unitKind(NAL& unit) {
    switch (unit.streamType()) {
        case StreamType::h264:
        case StreamType::hevc:
            return nalKind(unit);
        case StreamType::mpeg2Video:
            return mpeg2Kind(unit.bytes());
        case StreamType::mpeg4Visual:
            return mpeg4Kind(unit);
        case StreamType::h263:
            return h263Kind(unit.bytes());
        case StreamType::aacAdts:
            return adtsKind(unit.bytes());
        case StreamType::aacLatm:
            return latmKind(unit.bytes());
        case StreamType::mpeg1Audio:
            return layerKind(unit.bytes());
        case StreamType::ac3:
            return ac3Kind(unit.bytes());
        case StreamType::mpeg2ts:
            return pidKind(unit.bytes());
        case StreamType::scte35:
            return spliceKind(unit);
        case StreamType::webVtt:
            return webVttKind(unit.bytes());
        case StreamType::ttml:
            return "document";
        case StreamType::klv:
            return "item";
        case StreamType::dvbSubtitle:
        case StreamType::teletext:
            return "data field";
        case StreamType::proRes:
        case StreamType::aacRaw:
            return "frame";
        default:
            return "unit";
    }
}

}  // namespace mvrtpfec
