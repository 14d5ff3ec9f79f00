#include "rtp_media/audio/adts_header.h"

#include "rtp_media/bits/bit_set.h"

namespace mvrtpfec {

namespace {

constexpr std::size_t headerLengthOf(std::uint8_t second) {
    const bool protectionAbsent = (second & 1) != 0;
    return protectionAbsent ? 7 : 9;
}

constexpr std::size_t lengthField(std::span<const std::uint8_t> bytes) {
    return static_cast<std::size_t>((bytes[3] & 3) << 11 | bytes[4] << 3 | bytes[5] >> 5);
}

}  // namespace

std::size_t adtsFrameLength(std::span<const std::uint8_t, AdtsHeader::lengthEnd> bytes) {
    if (!isAdtsSync(bytes[0], bytes[1])) return 0;
    const std::size_t length = lengthField(bytes);
    return length >= headerLengthOf(bytes[1]) ? length : 0;
}

std::optional<AdtsHeader> parseAdtsHeader(std::span<const std::uint8_t> frame) {
    if (frame.size() < AdtsHeader::lengthEnd || !isAdtsSync(frame[0], frame[1])) return std::nullopt;
    AdtsHeader header;
    header.headerLength = headerLengthOf(frame[1]);
    if (frame.size() < header.headerLength) return std::nullopt;
    header.samplingFrequencyIndex = (frame[2] & 0x3CU) >> 2;
    header.channelConfiguration = (frame[2] & 1U) << 2 | frame[3] >> 6;
    header.frameLength = lengthField(frame);
    header.furtherDataBlocks = frame[6] & 3U;
    return header;
}

std::vector<std::uint8_t> audioSpecificConfigOf(std::uint32_t samplingFrequencyIndex,
                                                std::uint32_t channelConfiguration) {
    constexpr std::uint32_t aacLc = 2;
    Bit_Set config;
    config.append(aacLc, 5);
    config.append(samplingFrequencyIndex, 4);
    config.append(channelConfiguration, 4);
    // frameLengthFlag, dependsOnCoreCoder, extensionFlag
    config.append(0, 3);
    return config.bytes();
}

}  // namespace mvrtpfec
