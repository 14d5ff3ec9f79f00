#pragma once

#include "rtp_media/audio/nal_aac_latm_loas.h"
#include "rtp_media/audio/nal_builder_synced_frames.h"

namespace mvrtpfec {

/// ISO/IEC 14496-3, 1.7.2.1: audioMuxLengthBytes ends the frame.
struct LoasFormat {
    using Unit = NALAACLATMLOAS;
    static constexpr std::uint8_t firstByte = LoasFrame::firstByte;
    static constexpr std::size_t lengthEnd = LoasFrame::headerSize;
    static bool syncs(std::uint8_t second) { return isLoasSync(firstByte, second); }
    static std::size_t frameLength(std::span<const std::uint8_t, lengthEnd> bytes) {
        return loasFrameLength(bytes);
    }
};

/// Cuts AAC in LATM/LOAS (AudioSyncStream) into its frames.
class NALBuilderAACLATMLOASAudio final : public NALBuilderSyncedFrames<LoasFormat> {};

}  // namespace mvrtpfec
