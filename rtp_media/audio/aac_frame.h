#pragma once

#include <cstddef>
#include <cstdint>

namespace mvrtpfec {

/// What it takes to send one AAC frame, whatever header it came with.
struct AacFrame {
    std::size_t headerLength = 0;  ///< bytes before the frame itself
    std::uint32_t sampleRate = 0;  ///< Hz; 0 where the header names none
    std::uint32_t channels = 0;
    std::uint32_t samples = 0;  ///< that the frame decodes to, at sampleRate
    bool sbr = false;           ///< the configuration signals spectral band replication
    /// As the header of an ADTS frame has it; not used for a raw one.
    std::uint32_t samplingFrequencyIndex = 0;
};

}  // namespace mvrtpfec
