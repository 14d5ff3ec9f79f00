#pragma once

#include <cstdint>
#include <memory>

#include "core/rtp_packet.h"
#include "host/graph/sender_branch.h"
#include "host/graph/sent_numbers.h"
#include "host/interop/fec_format.h"

namespace mvrtpfec {

struct ProtectionFigures {
    std::uint64_t passedOver = 0;  ///< media packets that don't fit an FEC packet
    std::uint64_t overHoles = 0;   ///< FEC packets left out, of groups with holes in the input
    std::uint64_t notTurned = 0;   ///< the same of unequal packets, which standard ones can't protect
};

/// The sender filter of a graph, and what decides which of its FEC packets leave, and how: no receiver is
/// sent one that would have it rebuild a wrong packet. All on the host's thread.
class Protection {
public:
    using Output = SenderBranch::Output;

    /// Adds its filters to `graph`, which is run when all is built. Throws GraphError.
    Protection(FilterGraph& graph, const MatrixConfig& matrix, FecFormat format, Output output);

    /// Feeds one media packet; FEC packets it completes are given to the output before this returns. Throws
    /// GraphError and what the output threw.
    void push(std::unique_ptr<RtpPacket> media);
    /// Ends the stream; FEC packets that aren't complete are not made.
    void finish() { sender_.finish(); }

    const ProtectionFigures& figures() const { return figures_; }

private:
    void pass(StreamPort port, ConstRtpPacketView fec);

    Output output_;
    FecFormat format_;
    FecFormatBridge bridge_;
    SentNumbers sent_;
    ProtectionFigures figures_;
    // The first to go: its output uses the members above.
    SenderBranch sender_;
};

}  // namespace mvrtpfec
