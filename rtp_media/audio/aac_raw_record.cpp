#include "rtp_media/audio/aac_raw_record.h"

#include "core/big_endian.h"

namespace mvrtpfec {

namespace {

constexpr std::uint64_t noTime = ~std::uint64_t{0};

void append32(std::vector<std::uint8_t>& out, std::uint32_t value) {
    out.resize(out.size() + 4);
    writeBigEndian32(out.data() + out.size() - 4, value);
}

void append(std::vector<std::uint8_t>& out, std::span<const std::uint8_t> bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

}  // namespace

std::uint32_t aacRawConfigBits(std::span<const std::uint8_t> record) {
    return readBigEndian32(&record[12]);
}

std::uint32_t aacRawFrameLength(std::span<const std::uint8_t> record, std::size_t headerSize) {
    return readBigEndian32(&record[headerSize - AacRawRecord::frameLengthSize]);
}

bool isAacRawRecord(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < AacRawRecord::fixedSize) return false;
    const std::size_t headerSize = aacRawHeaderSize(aacRawConfigBits(bytes));
    return bytes.size() >= headerSize && bytes.size() - headerSize == aacRawFrameLength(bytes, headerSize);
}

AacRawExtent aacRawExtent(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < AacRawRecord::fixedSize) return {AacRawRecord::fixedSize, 0};
    const std::uint32_t configBits = aacRawConfigBits(bytes);
    if (configBits < AacRawRecord::shortestConfigBits || configBits > AacRawRecord::longestConfigBits)
        return {};
    const std::size_t headerSize = aacRawHeaderSize(configBits);
    if (bytes.size() < headerSize) return {headerSize, 0};
    const std::uint32_t frameLength = aacRawFrameLength(bytes, headerSize);
    if (frameLength == 0 || frameLength > AacRawRecord::longestFrame) return {};
    return {headerSize, headerSize + frameLength};
}

std::optional<std::int64_t> aacRawTime(std::span<const std::uint8_t> record) {
    const std::uint64_t time =
        std::uint64_t{readBigEndian32(record.data())} << 32 | readBigEndian32(&record[4]);
    if (time == noTime || time == 0) return std::nullopt;
    return static_cast<std::int64_t>(time);
}

void writeAacRawRecord(const AacRawRecord& record, std::vector<std::uint8_t>& out) {
    const std::uint64_t time = record.time ? static_cast<std::uint64_t>(*record.time) : noTime;
    append32(out, static_cast<std::uint32_t>(time >> 32));
    append32(out, static_cast<std::uint32_t>(time));
    append32(out, record.writersNumber);
    append32(out, record.configBits);
    append(out, record.config);
    append32(out, static_cast<std::uint32_t>(record.frame.size()));
    append(out, record.frame);
}

}  // namespace mvrtpfec
