#pragma once

#include <optional>
#include <vector>

#include "rtp_media/audio/audio_mux_element.h"
#include "rtp_media/audio/rtp_packet_builder_aac.h"

namespace mvrtpfec {

/// AAC in LATM as MP4A-LATM (RFC 6416): one AudioMuxElement a packet, without its StreamMuxConfig, which
/// stands in the SDP. A frame with the reserved flag audioMuxVersionA aborts the process.
class RTPPacketBuilderAACLATMAudio final : public RTPPacketBuilderAAC {
public:
    RTPPacketBuilderAACLATMAudio(std::uint32_t payloadType, std::uint32_t port, RTPPacketListener* listener)
        : RTPPacketBuilderAAC(payloadType, port, listener) {}

    void onNAL(std::unique_ptr<NAL> unit) override;

private:
    std::optional<LoasFrame> frameOf(NAL& unit) const;
    void buildSdp(const NAL& unit, const LoasFrame& frame);

    std::optional<StreamMuxConfig> config_;  ///< what frames without their own stand on
    std::vector<std::uint8_t> payload_;      ///< kept for its memory
};

}  // namespace mvrtpfec
