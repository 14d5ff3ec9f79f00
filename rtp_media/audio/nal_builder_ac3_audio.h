#pragma once

#include "rtp_media/audio/ac3_frame_size.h"
#include "rtp_media/audio/nal_ac3.h"
#include "rtp_media/audio/nal_builder_synced_frames.h"

namespace mvrtpfec {

/// ATSC A/52, 5.3.1: sync word 0B 77.
struct Ac3Format {
    using Unit = NALAC3;
    static constexpr std::uint8_t firstByte = 0x0B;
    static constexpr std::size_t lengthEnd = ac3SizeEnd;
    static bool syncs(std::uint8_t second) { return second == 0x77; }
    static std::size_t frameLength(std::span<const std::uint8_t, lengthEnd> bytes) {
        return ac3FrameSize(bytes);
    }
};

/// Cuts AC-3 and E-AC-3 into their syncframes.
class NALBuilderAC3Audio final : public NALBuilderSyncedFrames<Ac3Format> {};

}  // namespace mvrtpfec
