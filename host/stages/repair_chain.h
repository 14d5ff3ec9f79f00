#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>

#include "core/rtp_packet.h"
#include "engine/fec_receiver.h"
#include "engine/stream_drain.h"
#include "guard/packet_guard.h"
#include "guard/packet_ledger.h"
#include "host/graph/receiver_branch.h"
#include "host/io/datagram.h"

namespace mvrtpfec {

/// What the receiver counts is as the filter does; what the program tells of losses is in `stream`.
struct RepairFigures : FecReceiverFigures {
    LedgerFigures stream;  ///< settled as packets are delivered, all of it at the end

    /// Decoders replaced, but for those that the guard had replaced or that met more losses than they hold.
    std::uint64_t resets() const;
};

/// A stream, of a file or live, through the receiver of a graph, with or without the packet guard in front.
/// At its end the last window is pushed out with padding media packets, which neither the output nor the
/// figures see. The host's thread, but for the output.
class RepairChain {
public:
    /// Runs on the receiver's thread, and not any more when finish() has returned.
    using Output = ReceiverBranch::Output;

    /// Adds its filters to `graph`, which is run when all is built; without settings there is no guard. The
    /// receiver logs to `log`. Throws GraphError, std::invalid_argument.
    RepairChain(FilterGraph& graph, const std::optional<GuardSettings>& guard, mvn::log::ILogPerf& log,
                Output output);

    /// What the output throws comes out of a later push() or of finish(), as does GraphError.
    void push(StreamPort port, std::span<const std::uint8_t> datagram, const Moment& moment);
    /// The same without a copy.
    void push(StreamPort port, std::unique_ptr<RtpPacket> packet, const Moment& moment);
    /// As PacketLedger::expect.
    void expect(ConstRtpPacketView media) { ledger_.expect(media); }
    /// As PacketGuard::passTime; what becomes free by it leaves with the latest push's moment.
    void passTime(std::chrono::steady_clock::time_point now);
    /// The stream goes on without us: what FEC packets name from now on isn't lost.
    void breakOff() { isBrokenOff_ = true; }
    void finish();
    /// At any time; exact after finish().
    RepairFigures figures() const;

private:
    void account(ConstRtpPacketView packet);
    void deliver(ConstRtpPacketView packet, const Moment& moment);
    void feed(std::size_t input, std::unique_ptr<RtpPacket> packet);
    void pushOut();
    void pad(std::uint32_t index);

    Output output_;
    Moment now_;  ///< of the latest push
    PacketLedger ledger_;

    std::size_t mediaInput_ = 0;
    bool isBrokenOff_ = false;

    std::uint32_t paddingPushed_ = 0;
    std::uint64_t runts_ = 0;

    // The receiver's thread shares these; the host's looks at them and sets them while the receiver is idle.
    StreamDrain drain_;  ///< which the receiver's thread asks after its begin() alone
    bool drained_ = false;
    std::atomic<std::uint64_t> delivered_{0};  ///< looked at at any time

    std::unique_ptr<PacketGuard> guard_;
    // The first to go: its output uses the members above.
    ReceiverBranch receiver_;
};

}  // namespace mvrtpfec
