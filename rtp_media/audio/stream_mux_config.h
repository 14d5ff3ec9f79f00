#pragma once

#include <cstddef>
#include <cstdint>

#include "rtp_media/audio/audio_specific_config.h"
#include "rtp_media/audio/mpeg4_audio_exception.h"

namespace mvrtpfec {

/// audioMuxVersionA is set: the reserved syntax. A sort of its own, as one user of the parser doesn't go on
/// then.
using ReservedMuxVersionException = mvn::ExceptionTemplate<struct StreamMuxConfig, Mpeg4AudioException>;

/// StreamMuxConfig (ISO/IEC 14496-3, 1.7.3.1) of one program with one layer of variable frame length, all
/// streams with the same time framing.
struct StreamMuxConfig {
    std::uint32_t audioMuxVersion = 0;
    std::size_t subframes = 1;  ///< 1 to 64
    AudioSpecificConfig audio;
    std::uint32_t frameLengthType = 0;
    bool otherDataPresent = false;
    std::uint32_t otherDataLenBits = 0;
    bool crcCheckPresent = false;

    /// Of one AudioMuxElement, at the rate of `audio`.
    std::uint32_t frameSamples() const { return static_cast<std::uint32_t>(subframes) * audio.frameSamples; }
};

/// Throws BitstreamException when it ends too early, Mpeg4AudioException when it isn't supported.
StreamMuxConfig parseStreamMuxConfig(BitReader& bits);

}  // namespace mvrtpfec
