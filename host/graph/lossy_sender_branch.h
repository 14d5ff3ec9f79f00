#pragma once

#include <functional>

#include "core/rtp_packet.h"
#include "host/graph/channel.h"
#include "host/graph/channel_filter.h"
#include "host/graph/filter_graph.h"
#include "host/graph/matrix_config.h"
#include "host/graph/packet_sink_filter.h"
#include "host/graph/packet_source_filter.h"
#include "host/io/datagram.h"

namespace mvrtpfec {

/// The sending end of a graph with a lossy network behind it: a source of media, the sender filter for its
/// FEC, the channel for all three streams, a sink. All on the host's thread.
class LossySenderBranch {
public:
    using Output = std::function<void(StreamPort, ConstRtpPacketView)>;

    /// Adds the filters to `graph`, which is run when all is built. Throws GraphError and what checkChannel
    /// throws.
    LossySenderBranch(FilterGraph& graph, const MatrixConfig& matrix, const ChannelConfig& channel,
                      Output output);
    /// Stops the graph.
    ~LossySenderBranch();

    LossySenderBranch(const LossySenderBranch&) = delete;
    LossySenderBranch& operator=(const LossySenderBranch&) = delete;

    /// Sends one media packet and then the FEC packets it completes; what the network lets out is given to
    /// the output before this returns. Throws GraphError and what the output threw.
    void push(ConstRtpPacketView media);
    /// The network lets out what is still under way.
    void finish();

    const Channel& channel() const { return channel_->channel(); }

private:
    void check(HRESULT result) const;

    FilterGraph& graph_;
    CComPtr<PacketSourceFilter> source_;
    CComPtr<ChannelFilter> channel_;
    CComPtr<PacketSinkFilter> sink_;
};

}  // namespace mvrtpfec
