#pragma once

#include "rtp_media/audio/nal_builder_frames.h"

namespace mvrtpfec {

/// Splits a stream of AacRawRecords into units, one record each. A sample normally holds one; several, or
/// parts, are fine. A record with an impossible length isn't taken for one, and the hunt goes on behind its
/// first byte. A unit is timed by its sample, or by its record where the sample has no time.
class NALBuilderAACRawAudio final : public NALBuilderFrames {
public:
    NALBuilderAACRawAudio();

private:
    Finding inspect(std::span<const std::uint8_t> header) const override;
    std::unique_ptr<NAL> takeUnit(PendingSamples& pending, std::size_t size) const override;
};

}  // namespace mvrtpfec
