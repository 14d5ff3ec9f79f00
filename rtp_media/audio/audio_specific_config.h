#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "rtp_media/bits/bit_reader.h"

namespace mvrtpfec {

/// A samplingFrequencyIndex with its value, which index 15 gives explicitly.
struct SamplingFrequency {
    static constexpr std::uint32_t explicitIndex = 15;

    std::uint32_t index = 0;
    std::uint32_t hz = 0;  ///< 0 for a reserved index
};

/// AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1) of the object types that GASpecificConfig describes.
struct AudioSpecificConfig {
    enum ObjectType : std::uint32_t {
        aacLc = 2,
        aacScalable = 6,
        sbr = 5,
        erAacScalable = 20,
        erTwinVq = 21,
        erBsac = 22,
        erAacLd = 23,
        parametricStereo = 29,
        escape = 31,
    };

    std::uint32_t audioObjectType = 0;  ///< of the frames themselves, below SBR and parametric stereo
    SamplingFrequency samplingFrequency;
    std::uint32_t channelConfiguration = 0;
    /// How an extension is signalled: sbr or parametricStereo in front of the configuration, sbr or erBsac
    /// behind it; 0: not at all.
    std::uint32_t extensionAudioObjectType = 0;
    SamplingFrequency extensionSamplingFrequency;
    bool sbrPresent = false;
    bool psPresent = false;
    std::uint32_t frameSamples = 1024;  ///< at samplingFrequency, of a frame and channel
};

/// Reads a configuration of `length` bits; where the length isn't known, no extension is looked for behind
/// it. The position is left behind what was read. Throws BitstreamException when it ends too early, and
/// Mpeg4AudioException for other object types and for error protection.
AudioSpecificConfig parseAudioSpecificConfig(BitReader& bits, std::optional<std::size_t> length);

/// The same of a configuration that can't be read to its end, too: what stands in its first fields then, the
/// object types, rates and channels. None where these aren't within its `length` bits.
std::optional<AudioSpecificConfig> readAudioSpecificConfig(std::span<const std::uint8_t> bytes,
                                                           std::size_t length);

}  // namespace mvrtpfec
