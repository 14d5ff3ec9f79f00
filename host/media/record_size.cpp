#include "host/media/record_size.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include "core/big_endian.h"
#include "rtp_media/audio/aac_raw_record.h"

namespace mvrtpfec {

namespace {

using Bytes = std::span<const std::uint8_t>;

RecordSize more(Bytes bytes) {
    return {0, 2 * bytes.size() + 64};
}

RecordSize known(std::size_t size) {
    return {size, 0};
}

RecordSize spliceRecord(Bytes bytes) {
    constexpr std::size_t numberSize = 8;
    constexpr std::uint8_t tableId = 0xFC;
    if (bytes.size() < numberSize + 3) return more(bytes);
    if (bytes[numberSize] != tableId) throw std::runtime_error("no splice_info_section begins here");
    return known(numberSize + 3 + (readBigEndian16(&bytes[numberSize + 1]) & 0xFFFU));
}

RecordSize klvRecord(Bytes bytes) {
    constexpr std::size_t keySize = 16;
    constexpr std::size_t mostLengthBytes = 4;
    if (bytes.size() <= keySize) return more(bytes);
    if (bytes[0] != 0x06 || bytes[1] != 0x0E) throw std::runtime_error("no universal key begins here");
    const std::size_t first = bytes[keySize];
    if (first < 0x80) return known(keySize + 1 + first);
    const std::size_t count = first & 0x7FU;
    if (count == 0 || count > mostLengthBytes)
        throw std::runtime_error("the length of the value is no number");
    if (bytes.size() < keySize + 1 + count) return more(bytes);
    std::size_t length = 0;
    for (const std::uint8_t byte : bytes.subspan(keySize + 1, count)) length = length << 8 | byte;
    return known(keySize + 1 + count + length);
}

std::string_view textOf(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The root's end tag, with or without a namespace prefix, and the white space behind it.
RecordSize ttmlRecord(Bytes bytes) {
    const std::string_view text = textOf(bytes);
    for (std::size_t at = text.find("</"); at != std::string_view::npos; at = text.find("</", at + 2)) {
        const std::size_t close = text.find('>', at);
        if (close == std::string_view::npos) break;
        std::string_view name = text.substr(at + 2, close - at - 2);
        name.remove_prefix(std::min(name.find(':') + 1, name.size()));
        if (name.substr(0, name.find_first_of(" \t\r\n")) != "tt") continue;
        const std::size_t next = text.find_first_not_of(" \t\r\n", close + 1);
        return next == std::string_view::npos ? more(bytes) : known(next);
    }
    return more(bytes);
}

RecordSize webVttRecord(Bytes bytes) {
    const std::string_view text = textOf(bytes);
    const std::size_t blank = std::min(text.find("\n\n"), text.find("\n\r\n"));
    if (blank == std::string_view::npos) return more(bytes);
    const std::size_t next = text.find_first_not_of("\r\n", blank);
    return next == std::string_view::npos ? more(bytes) : known(next);
}

RecordSize subtitleRecord(Bytes bytes) {
    constexpr std::size_t fieldHeader = 2;
    constexpr std::size_t segmentHeader = 6;
    constexpr std::uint8_t segmentSync = 0x0F;
    constexpr std::uint8_t endMarker = 0xFF;
    if (bytes[0] != 0x20) throw std::runtime_error("no subtitle data field begins here");
    std::size_t at = fieldHeader;
    while (at + segmentHeader <= bytes.size() && bytes[at] == segmentSync)
        at += segmentHeader + readBigEndian16(&bytes[at + 4]);
    if (at >= bytes.size()) return {0, at + 1};
    if (bytes[at] == segmentSync) return {0, at + segmentHeader};
    if (bytes[at] != endMarker) throw std::runtime_error("neither a segment nor an end marker follows");
    return known(at + 1);
}

RecordSize teletextRecord(Bytes bytes) {
    constexpr std::size_t unitSize = 46;
    constexpr std::uint8_t lengthByte = 0x2C;
    const auto beginsField = [&](std::size_t at) { return bytes[at] >= 0x10 && bytes[at] <= 0x1F; };
    if (!beginsField(0)) throw std::runtime_error("no teletext data field begins here");
    std::size_t at = 1;
    while (at + 1 < bytes.size() && bytes[at + 1] == lengthByte) at += unitSize;
    if (at >= bytes.size()) return {0, at + 2};
    if (beginsField(at)) return known(at);
    if (at + 1 >= bytes.size()) return {0, at + 2};
    throw std::runtime_error("a teletext data unit isn't 44 bytes long");
}

/// What is no record is passed over up to where one may begin; the parser drops it.
RecordSize aacRawRecord(Bytes bytes) {
    const auto first = aacRawExtent(bytes);
    if (first.headerSize > bytes.size()) return {0, first.headerSize};
    if (first.size > 0) return known(first.size);
    std::size_t junk = 1;
    while (aacRawExtent(bytes.subspan(junk)).headerSize == 0) ++junk;
    return known(junk);
}

}  // namespace

bool isCutIntoRecords(StreamType type) {
    switch (type) {
        case StreamType::aacRaw:
        case StreamType::scte35:
        case StreamType::klv:
        case StreamType::ttml:
        case StreamType::webVtt:
        case StreamType::dvbSubtitle:
        case StreamType::teletext:
        case StreamType::syncPoint22:
        case StreamType::syncPoint23:
        case StreamType::syncPoint24:
            return true;
        default:
            return false;
    }
}

RecordSize recordSize(StreamType type, Bytes bytes) {
    if (bytes.empty()) return more(bytes);
    switch (type) {
        case StreamType::aacRaw:
            return aacRawRecord(bytes);
        case StreamType::scte35:
            return spliceRecord(bytes);
        case StreamType::klv:
            return klvRecord(bytes);
        case StreamType::ttml:
            return ttmlRecord(bytes);
        case StreamType::webVtt:
            return webVttRecord(bytes);
        case StreamType::dvbSubtitle:
            return subtitleRecord(bytes);
        case StreamType::teletext:
            return teletextRecord(bytes);
        default:
            return more(bytes);
    }
}

}  // namespace mvrtpfec
