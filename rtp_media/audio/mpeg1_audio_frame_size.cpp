#include "rtp_media/audio/mpeg1_audio_frame_size.h"

#include <array>

namespace mvrtpfec {

namespace {

/// ISO/IEC 11172-3, 2.4.2.3: kbit/s for bitrate_index 1 to 14.
using BitRates = std::array<std::uint32_t, 14>;
constexpr BitRates layer1{32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448};
constexpr BitRates layer2{32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384};
constexpr BitRates layer3{32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320};
constexpr std::array<std::uint32_t, 3> samplingFrequencies{44100, 48000, 32000};

}  // namespace

std::size_t mpeg1AudioFrameSize(std::span<const std::uint8_t, mpeg1AudioHeaderSize> header) {
    const bool sync = header[0] == 0xFF && (header[1] & 0xF8) == 0xF8;
    const std::uint32_t layer = 4 - (header[1] >> 1 & 3U);
    const std::uint32_t rateIndex = header[2] >> 4;
    const std::uint32_t frequencyIndex = header[2] >> 2 & 3U;
    const std::uint32_t padding = header[2] >> 1 & 1U;
    if (!sync || layer == 4 || rateIndex == 0 || rateIndex == 15 || frequencyIndex == 3) return 0;
    const BitRates& rates = layer == 1 ? layer1 : layer == 2 ? layer2 : layer3;
    const std::uint32_t bitRate = rates[rateIndex - 1] * 1000;
    const std::uint32_t frequency = samplingFrequencies[frequencyIndex];
    if (layer == 1) return (12 * bitRate / frequency + padding) * std::size_t{4};
    return 144 * bitRate / frequency + std::size_t{padding};
}

}  // namespace mvrtpfec
