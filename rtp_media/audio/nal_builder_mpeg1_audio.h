#pragma once

#include "rtp_media/audio/mpeg1_audio_frame_size.h"
#include "rtp_media/audio/nal_builder_synced_frames.h"
#include "rtp_media/audio/nal_mpeg1_audio.h"

namespace mvrtpfec {

/// ISO/IEC 11172-3, 2.4.1.3.
struct Mpeg1AudioFormat {
    using Unit = NALMPEG1Audio;
    static constexpr std::uint8_t firstByte = 0xFF;
    static constexpr std::size_t lengthEnd = mpeg1AudioHeaderSize;
    /// The headers of layers II and I, with a CRC and without.
    static bool syncs(std::uint8_t second) { return (second & 0xFE) == 0xFC || (second & 0xFE) == 0xFE; }
    static std::size_t frameLength(std::span<const std::uint8_t, lengthEnd> bytes) {
        return mpeg1AudioFrameSize(bytes);
    }
};

/// Cuts MPEG-1 audio of layers I and II into its frames. Layer III isn't hunted for.
class NALBuilderMPEG1Audio final : public NALBuilderSyncedFrames<Mpeg1AudioFormat> {};

}  // namespace mvrtpfec
