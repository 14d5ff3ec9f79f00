#pragma once

#include "rtp_media/audio/adts_header.h"
#include "rtp_media/audio/nal_aac_adts.h"
#include "rtp_media/audio/nal_builder_synced_frames.h"

namespace mvrtpfec {

/// ISO/IEC 14496-3, 1.A.2.2: the 13-bit length ends the frame.
struct AdtsFormat {
    using Unit = NALAACADTS;
    static constexpr std::uint8_t firstByte = 0xFF;
    static constexpr std::size_t lengthEnd = AdtsHeader::lengthEnd;
    static bool syncs(std::uint8_t second) { return isAdtsSync(firstByte, second); }
    static std::size_t frameLength(std::span<const std::uint8_t, lengthEnd> bytes) {
        return adtsFrameLength(bytes);
    }
};

/// Cuts AAC with ADTS headers into its frames.
class NALBuilderAACADTSAudio final : public NALBuilderSyncedFrames<AdtsFormat> {};

}  // namespace mvrtpfec
