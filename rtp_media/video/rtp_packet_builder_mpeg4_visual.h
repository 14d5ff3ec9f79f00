#pragma once

#include <string>

#include "rtp_media/chain/rtp_packet_builder.h"

namespace mvrtpfec {

/// MPEG-4 Visual as MP4V-ES (RFC 6416, 5): object planes in packets of at most 1300 bytes. Headers go to the
/// SDP alone, until that is complete.
class RTPPacketBuilderMPEG4Visual final : public RTPPacketBuilder {
public:
    RTPPacketBuilderMPEG4Visual(std::uint32_t payloadType, std::uint32_t port, RTPPacketListener* listener)
        : RTPPacketBuilder(payloadType, port, listener) {}

    void onNAL(std::unique_ptr<NAL> unit) override;
    void onEndOfStream() override { deliverPacket(nullptr); }
    std::uint32_t getMaxPacketRate() const override { return 104; }

private:
    void takeHeader(const NAL& unit, NAL::Header header);
    void describe();
    void packetize(const NAL& unit, const SampleTiming& timing);
    void send(std::unique_ptr<NAL> chunk, bool marker, std::uint64_t pts, bool discontinuity);

    std::unique_ptr<RTPMediaPacket> pendingPacket_;
    bool profileSeen_ = false;
    std::uint32_t profileLevel_ = 0;
    std::string configHex_;
    bool configSeen_ = false;
};

}  // namespace mvrtpfec
