#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace mvrtpfec {

/// Fixed and variable header of an ADTS frame (ISO/IEC 14496-3, 1.A.2.2).
struct AdtsHeader {
    /// Bytes that tell the frame's length.
    static constexpr std::size_t lengthEnd = 6;

    std::uint32_t samplingFrequencyIndex = 0;
    std::uint32_t channelConfiguration = 0;
    std::size_t frameLength = 0;   ///< with the header
    std::size_t headerLength = 0;  ///< 7, with a CRC 9
    std::uint32_t furtherDataBlocks = 0;
};

/// Sync word and layer 0.
constexpr bool isAdtsSync(std::uint8_t first, std::uint8_t second) {
    return first == 0xFF && (second & 0xF6) == 0xF0;
}

/// Length of the frame whose first six bytes these are; 0 when they are no header, or when the length doesn't
/// even hold it.
std::size_t adtsFrameLength(std::span<const std::uint8_t, AdtsHeader::lengthEnd> bytes);

/// None when there is no sync word or the header isn't all there.
std::optional<AdtsHeader> parseAdtsHeader(std::span<const std::uint8_t> frame);

/// The AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1) that stands for the header where AAC is sent without
/// one: object type AAC LC, whatever profile the header names.
std::vector<std::uint8_t> audioSpecificConfigOf(std::uint32_t samplingFrequencyIndex,
                                                std::uint32_t channelConfiguration);

}  // namespace mvrtpfec
