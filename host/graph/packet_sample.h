#pragma once

#include <memory>
#include <utility>

#include "core/rtp_packet.h"
#include "framework/samples/media_sample.h"
#include "host/graph/in_flight.h"

namespace mvrtpfec {

/// A sample that owns its payload, one RTP packet, from hold() until it comes home to its allocator.
class PacketSample final : public CMediaSample {
public:
    using CMediaSample::CMediaSample;

    void hold(std::unique_ptr<RtpPacket> packet) noexcept {
        packet_ = std::move(packet);
        SetPointer(packet_->view.data, packet_->view.length);
        tag = {packet_->view.sequenceNumber(), false};
    }
    void drop() noexcept { packet_.reset(); }

    InFlight::Tag tag;

private:
    std::unique_ptr<RtpPacket> packet_;
};

}  // namespace mvrtpfec
