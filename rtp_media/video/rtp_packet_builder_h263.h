#pragma once

#include "rtp_media/chain/rtp_packet_builder.h"

namespace mvrtpfec {

/// H.263 as H263-2000 (RFC 4629): a picture in packets of at most 1300 bytes behind a payload header of two.
/// A picture with PLUSPTYPE is dropped; the figures of the SDP are the same for every stream.
class RTPPacketBuilderH263 final : public RTPPacketBuilder {
public:
    RTPPacketBuilderH263(std::uint32_t payloadType, std::uint32_t port, RTPPacketListener* listener)
        : RTPPacketBuilder(payloadType, port, listener) {}

    void onNAL(std::unique_ptr<NAL> unit) override;
    void onEndOfStream() override { deliverPacket(nullptr); }
    std::uint32_t getMaxPacketRate() const override { return 28; }

private:
    void followTemporalReference(std::uint8_t reference);
    bool describe(std::uint8_t sourceFormat);
    void packetize(const NAL& unit, const SampleTiming& timing);

    std::uint8_t lastTemporalReference_ = 0;
    std::uint64_t temporalReferenceWraps_ = 0;
};

}  // namespace mvrtpfec
