#pragma once

#include <cstdint>
#include <optional>

#include "host/io/datagram.h"
#include "host/io/packet_sink.h"
#include "rtp_media/chain/rtp_media_packet.h"

namespace mvrtpfec {

struct PacketFigures {
    std::uint64_t packets = 0;
    std::uint64_t bytes = 0;  ///< with their RTP headers
    std::uint64_t clockRate = 0;
    std::uint64_t span = 0;  ///< from the earliest to the latest media time, 90 kHz
};

/// Writes the packets of one stream to a sink, which it doesn't own: with RTP timestamps from 0 on and the
/// time of capture that of the media, counted from the first packet and never going back.
class PacketRecorder : public RTPPacketListener {
public:
    PacketRecorder(PacketSink& sink, std::uint32_t ssrc) : sink_(sink), ssrc_(ssrc) {}

    /// Throws FileError.
    void onPacket(std::unique_ptr<RTPMediaPacket> packet) override;
    void onEndOfStream() override {}

    const PacketFigures& figures() const { return figures_; }

private:
    void follow(const RTPMediaPacket& packet);

    PacketSink& sink_;
    std::uint32_t ssrc_;
    Datagram datagram_;
    PacketFigures figures_;
    std::optional<std::uint64_t> start_;  ///< media time that counts as 0 in the capture
    std::uint64_t earliest_ = 0;
    std::uint64_t latest_ = 0;
};

}  // namespace mvrtpfec
