#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "core/rtp_packet.h"
#include "host/graph/filter_graph.h"
#include "host/graph/in_flight.h"
#include "host/graph/packet_sink_filter.h"
#include "host/graph/packet_source_filter.h"
#include "mvrtpfec/rtp_fec_in.h"

namespace mvrtpfec {

/// The receiving end of a graph: a source of three streams, the receiver filter, a sink. The receiver works
/// on a thread of its own, yet what comes out, and with which moment, depends on what is pushed alone.
class ReceiverBranch {
public:
    /// Called on the receiver's thread with each packet and the moment of the push that set it free.
    using Output = std::function<void(ConstRtpPacketView, const Moment&)>;

    /// Adds the filters to `graph`, which is run when all is built. The receiver logs to `log`. Throws
    /// GraphError.
    ReceiverBranch(FilterGraph& graph, mvn::log::ILogPerf& log, Output output);
    /// Stops the graph; what has not come out by then is lost.
    ~ReceiverBranch();

    ReceiverBranch(const ReceiverBranch&) = delete;
    ReceiverBranch& operator=(const ReceiverBranch&) = delete;

    /// One packet of at least 12 bytes on input 0, 1 or 2. Waits while too much is under way. Throws
    /// GraphError and what the output threw first; nothing more is given to an output that has thrown.
    void push(std::size_t input, std::unique_ptr<RtpPacket> packet, const Moment& moment);

    /// Returns when all that has been pushed has had its effect, on the output too. Throws what the output
    /// threw first.
    void waitUntilIdle();

    /// Of what has been worked off.
    RtpFecInTotals totals() const;

private:
    FilterGraph& graph_;
    Output output_;
    std::shared_ptr<InFlight> inFlight_;
    Moment delivered_;  ///< of the packet being delivered; the receiver's thread
    CComPtr<PacketSourceFilter> source_;
    CComPtr<PacketSinkFilter> sink_;
    CComPtr<IRtpFecInTotals> totals_;
};

}  // namespace mvrtpfec
