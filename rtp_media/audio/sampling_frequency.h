#pragma once

#include <array>
#include <cstdint>

namespace mvrtpfec {

/// Hz for a samplingFrequencyIndex (ISO/IEC 14496-3, table 1.18); 0 for what is reserved and for the escape
/// to an explicit value.
constexpr std::uint32_t samplingFrequencyAt(std::uint32_t index) {
    constexpr std::array<std::uint32_t, 13> frequencies{96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                                        22050, 16000, 12000, 11025, 8000,  7350};
    return index < frequencies.size() ? frequencies[index] : 0;
}

}  // namespace mvrtpfec
