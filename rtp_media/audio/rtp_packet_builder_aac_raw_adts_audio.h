#pragma once

#include "rtp_media/audio/aac_frame.h"
#include "rtp_media/audio/rtp_packet_builder_aac.h"

namespace mvrtpfec {

/// AAC frames as mpeg4-generic, mode AAC-hbr (RFC 3640, 3.3.6): ADTS and raw units alike, one frame a packet,
/// without their headers. A frame of 8192 bytes or more is sent with the lower 13 bits of its size.
class RTPPacketBuilderAACRAWADTSAudio final : public RTPPacketBuilderAAC {
public:
    RTPPacketBuilderAACRAWADTSAudio(std::uint32_t payloadType, std::uint32_t port,
                                    RTPPacketListener* listener)
        : RTPPacketBuilderAAC(payloadType, port, listener) {}

    void onNAL(std::unique_ptr<NAL> unit) override;

private:
    void buildSdp(const NAL& unit, const AacFrame& frame);
};

}  // namespace mvrtpfec
