#include "host/graph/sender_branch.h"

#include <memory>
#include <utility>

#include "host/graph/graph_error.h"
#include "platform/wide_literal.h"

namespace mvrtpfec {

using platform::operator""_w;

SenderBranch::SenderBranch(FilterGraph& graph, const MatrixConfig& matrix, Output output)
    : graph_(graph),
      source_(PacketSourceFilter::create(1)),
      sink_(
          PacketSinkFilter::create(2, [output = std::move(output)](std::size_t pin, ConstRtpPacketView fec) {
              output(pin == 0 ? StreamPort::fecA : StreamPort::fecB, fec);
          })) {
    const auto sender = graph.filters().createSender(matrix);
    graph_.add(source_, "Media"_w);
    graph_.add(sender, "Sender"_w);
    graph_.add(sink_, "FEC"_w);
    graph_.connect(source_, 0, sender, 0);
    graph_.connect(sender, 0, sink_, 0);
    graph_.connect(sender, 1, sink_, 1);
}

SenderBranch::~SenderBranch() {
    graph_.stop();
}

void SenderBranch::push(ConstRtpPacketView media) {
    push(std::make_unique<RtpPacket>(media.data, media.length));
}

void SenderBranch::push(std::unique_ptr<RtpPacket> media) {
    const HRESULT result = source_->deliver(0, std::move(media));
    sink_->rethrowError();
    requireGraph(result, "the sender refuses a packet");
}

void SenderBranch::finish() {
    requireGraph(source_->endStream(), "the sender refuses the end of the stream");
}

}  // namespace mvrtpfec
