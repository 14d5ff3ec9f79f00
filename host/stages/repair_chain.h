#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "core/rtp_packet.h"
#include "guard/packet_guard.h"
#include "host/io/datagram.h"
#include "host/stages/fec_receiver.h"

namespace mvrtpfec {

struct RepairFigures {
    ReceiverFigures receiver;
    std::uint64_t delivered = 0;  ///< media packets given to the output
    std::uint64_t runts = 0;      ///< datagrams too short for an RTP header, left out
    std::optional<GuardFigures> guard;
};

/// A finite stream through the receiver, with or without the packet guard in front. At its end the
/// last window is pushed out with padding media packets, which neither the output nor the figures see.
class RepairChain {
public:
    using Output = std::function<void(ConstRtpPacketView)>;

    /// An exception that the output throws comes out of push() and finish().
    RepairChain(bool guarded, Output output);

    void push(StreamPort port, const std::vector<std::uint8_t>& datagram);
    void finish();
    RepairFigures figures() const;

private:
    void note(ConstRtpPacketView packet);
    void noteMedia(ConstRtpPacketView media);
    void noteFec(ConstRtpPacketView fec);
    void deliver(ConstRtpPacketView packet);
    void feed(std::size_t input, std::unique_ptr<RtpPacket> packet);
    std::unique_ptr<RtpPacket> makePadding(std::uint16_t number) const;
    bool isPadding(ConstRtpPacketView packet) const;
    void rethrowOutputError();

    Output output_;
    std::unique_ptr<FecReceiver> receiver_;
    std::unique_ptr<PacketGuard> guard_;

    std::size_t mediaInput_ = 0;
    std::optional<std::uint16_t> newest_;  ///< highest media number seen, or named by an FEC packet
    std::optional<std::uint16_t> behind_;  ///< a number behind the newest, seen last
    std::uint32_t ssrc_ = 0;

    std::uint32_t paddingPushed_ = 0;
    std::optional<std::uint16_t> firstPadding_;
    bool drained_ = false;

    std::uint64_t delivered_ = 0;
    std::uint64_t runts_ = 0;
    std::exception_ptr outputError_;
};

}  // namespace mvrtpfec
