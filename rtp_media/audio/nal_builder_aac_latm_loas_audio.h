#pragma once

#include <optional>

#include "rtp_media/audio/nal_aac_latm_loas.h"
#include "rtp_media/audio/nal_builder_synced_frames.h"
#include "rtp_media/audio/sample_clock.h"

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

/// Cuts AAC in LATM/LOAS (AudioSyncStream) into its frames. Those of a sample without a time count on from
/// the last time there was, or from 0, each as long as its configuration says; one that can't be read is as
/// long as the configuration before says. Before there is any, a frame bears no time.
class NALBuilderAACLATMLOASAudio final : public NALBuilderSyncedFrames<LoasFormat> {
public:
    void emit(std::unique_ptr<NAL> unit) override;
    void flush() override;

private:
    void learnConfig(NAL& unit);
    void setTime(SampleTiming& timing);

    std::optional<StreamMuxConfig> config_;
    SampleClock clock_;
    std::optional<std::int64_t> sampleTime_;  ///< the last that a sample had
};

}  // namespace mvrtpfec
