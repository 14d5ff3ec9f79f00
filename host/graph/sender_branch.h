#pragma once

#include <functional>
#include <memory>

#include "core/rtp_packet.h"
#include "host/graph/filter_graph.h"
#include "host/graph/matrix_config.h"
#include "host/graph/packet_sink_filter.h"
#include "host/graph/packet_source_filter.h"
#include "host/io/datagram.h"

namespace mvrtpfec {

/// The sending end of a graph: a source of media, the sender filter, a sink for both FEC streams. All on the
/// host's thread.
class SenderBranch {
public:
    using Output = std::function<void(StreamPort, ConstRtpPacketView)>;

    /// Adds the filters to `graph`, which is run when all is built. Throws GraphError.
    SenderBranch(FilterGraph& graph, const MatrixConfig& matrix, Output output);
    /// Stops the graph.
    ~SenderBranch();

    SenderBranch(const SenderBranch&) = delete;
    SenderBranch& operator=(const SenderBranch&) = delete;

    /// Feeds one media packet; FEC packets it completes are given to the output before this returns. Throws
    /// GraphError and what the output threw.
    void push(ConstRtpPacketView media);
    /// The same without a copy.
    void push(std::unique_ptr<RtpPacket> media);
    /// Ends the stream; FEC packets that aren't complete are not made.
    void finish();

private:
    FilterGraph& graph_;
    CComPtr<PacketSourceFilter> source_;
    CComPtr<PacketSinkFilter> sink_;
};

}  // namespace mvrtpfec
