#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace mvrtpfec {

/// Framing of AAC frames without a header of their own. A file is a run of records, one frame each, without
/// anything between them, and so is a sample; every number is big-endian:
///
///     0       8   presentation time of the frame, 100 ns, signed; all ones or all zeros: none. It counts
///     where
///                 the sample that holds the record has no time
///     8       4   a number of the writer's, passed on unread
///     12      4   length L of the AudioSpecificConfig in bits, 13 to 8192
///     16      C   AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1), C = ceil(L / 8), filled with zero bits
///     16 + C  4   length N of the frame in bytes, 1 to 65535
///     20 + C  N   raw_data_block (ISO/IEC 14496-3, 4.4.2.1)
struct AacRawRecord {
    static constexpr std::size_t fixedSize = 16;  ///< up to the configuration
    static constexpr std::size_t frameLengthSize = 4;
    /// Object type, rate and channels; the longest, with a program_config_element, stays far below.
    static constexpr std::uint32_t shortestConfigBits = 13;
    static constexpr std::uint32_t longestConfigBits = 8192;
    /// 6144 bits a channel (ISO/IEC 14496-3, 4.5.3.1) for all that can be told apart, and more.
    static constexpr std::uint32_t longestFrame = 65535;

    std::optional<std::int64_t> time;  ///< 100 ns
    std::uint32_t writersNumber = 0;
    std::uint32_t configBits = 0;
    std::span<const std::uint8_t> config;
    std::span<const std::uint8_t> frame;
};

/// L of a record whose first 16 bytes these are.
std::uint32_t aacRawConfigBits(std::span<const std::uint8_t> record);

/// Bytes before the frame for a configuration of this length.
constexpr std::size_t aacRawHeaderSize(std::uint32_t configBits) {
    return AacRawRecord::fixedSize + configBits / 8 + (configBits % 8 != 0 ? 1 : 0) +
           AacRawRecord::frameLengthSize;
}

/// N of a record whose `headerSize` bytes before the frame are there.
std::uint32_t aacRawFrameLength(std::span<const std::uint8_t> record, std::size_t headerSize);

/// Whether the bytes are one record, whatever its lengths.
bool isAacRawRecord(std::span<const std::uint8_t> bytes);

/// How long the record is that begins with some bytes, as far as they show it.
struct AacRawExtent {
    std::size_t headerSize =
        0;                 ///< bytes that it takes to tell; more than there are: ask again with that many
    std::size_t size = 0;  ///< 0: no record begins here
};
AacRawExtent aacRawExtent(std::span<const std::uint8_t> bytes);

/// The record's time, if it has one; its first 16 bytes are there.
std::optional<std::int64_t> aacRawTime(std::span<const std::uint8_t> record);

/// Adds the record to `out`.
void writeAacRawRecord(const AacRawRecord& record, std::vector<std::uint8_t>& out);

}  // namespace mvrtpfec
