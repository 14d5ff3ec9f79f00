#include "host/graph/lossy_sender_branch.h"

#include <memory>
#include <utility>

#include "host/graph/graph_error.h"
#include "platform/wide_literal.h"

namespace mvrtpfec {

using platform::operator""_w;

namespace {

enum SourcePin : std::size_t { toNetwork, toSender, sourcePins };

}  // namespace

LossySenderBranch::LossySenderBranch(FilterGraph& graph, const MatrixConfig& matrix,
                                     const ChannelConfig& channel, Output output)
    : graph_(graph),
      source_(PacketSourceFilter::create(sourcePins)),
      channel_(ChannelFilter::create(channel)),
      sink_(PacketSinkFilter::create(
          ChannelFilter::pinCount, [output = std::move(output)](std::size_t pin, ConstRtpPacketView packet) {
              output(static_cast<StreamPort>(pin), packet);
          })) {
    const auto sender = graph.filters().createSender(matrix);
    graph_.add(source_, "Media"_w);
    graph_.add(sender, "Sender"_w);
    graph_.add(channel_, "Network"_w);
    graph_.add(sink_, "Arrivals"_w);
    graph_.connect(source_, toNetwork, channel_, static_cast<std::size_t>(StreamPort::media));
    graph_.connect(source_, toSender, sender, 0);
    graph_.connect(sender, 0, channel_, static_cast<std::size_t>(StreamPort::fecA));
    graph_.connect(sender, 1, channel_, static_cast<std::size_t>(StreamPort::fecB));
    for (std::size_t pin = 0; pin < ChannelFilter::pinCount; ++pin) graph_.connect(channel_, pin, sink_, pin);
}

LossySenderBranch::~LossySenderBranch() {
    graph_.stop();
}

void LossySenderBranch::push(ConstRtpPacketView media) {
    check(source_->deliver(toNetwork, std::make_unique<RtpPacket>(media.data, media.length)));
    check(source_->deliver(toSender, std::make_unique<RtpPacket>(media.data, media.length)));
}

void LossySenderBranch::finish() {
    check(source_->endStream());
}

void LossySenderBranch::check(HRESULT result) const {
    sink_->rethrowError();
    requireGraph(result, "the sender or the network refuses a packet");
}

}  // namespace mvrtpfec
