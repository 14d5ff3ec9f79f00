#include "host/graph/receiver_branch.h"

#include <utility>

#include "host/graph/graph_error.h"
#include "platform/wide_literal.h"

namespace mvrtpfec {

using platform::operator""_w;

ReceiverBranch::ReceiverBranch(FilterGraph& graph, mvn::log::ILogPerf& log, Output output)
    : graph_(graph),
      output_(std::move(output)),
      inFlight_(std::make_shared<InFlight>()),
      source_(PacketSourceFilter::create(InFlight::inputCount, inFlight_)),
      sink_(PacketSinkFilter::create(1, [this](std::size_t, ConstRtpPacketView packet) {
          inFlight_->readMoment(delivered_);
          output_(packet, delivered_);
      })) {
    const auto receiver = graph.filters().createReceiver();
    totals_ = queryFor<IRtpFecInTotals>(receiver, IID_IRtpFecInTotals);
    if (!totals_) throw GraphError("the receiver filter doesn't count");
    const auto config = queryFor<IRtpFecInConfig>(receiver, IID_IRtpFecInConfig);
    if (!config) throw GraphError("the receiver filter takes no logger");
    // Before its output is connected and registers its buffers.
    requireGraph(config->SetLogPerf(&log), "the receiver filter takes no logger");
    graph_.add(source_, "Received"_w);
    graph_.add(receiver, "Receiver"_w);
    graph_.add(sink_, "Repaired"_w);
    for (std::size_t input = 0; input < InFlight::inputCount; ++input)
        graph_.connect(source_, input, receiver, input);
    graph_.connect(receiver, 0, sink_, 0);
}

ReceiverBranch::~ReceiverBranch() {
    graph_.stop();
}

void ReceiverBranch::push(std::size_t input, std::unique_ptr<RtpPacket> packet, const Moment& moment) {
    const HRESULT result = source_->deliver(input, std::move(packet), &moment);
    sink_->rethrowError();
    requireGraph(result, "the receiver refuses a packet");
}

void ReceiverBranch::waitUntilIdle() {
    inFlight_->waitUntilIdle();
    sink_->rethrowError();
}

RtpFecInTotals ReceiverBranch::totals() const {
    RtpFecInTotals totals;
    requireGraph(totals_->GetTotals(&totals), "the receiver doesn't tell its counts");
    return totals;
}

}  // namespace mvrtpfec
