#include "rtp_media/data/rtp_packet_builder_mpeg2ts.h"

#include <utility>

namespace mvrtpfec {

namespace {

constexpr std::size_t packetsInOne = 7;

}  // namespace

RTPPacketBuilderMpeg2ts::RTPPacketBuilderMpeg2ts(std::uint32_t payloadType, std::uint32_t port,
                                                 RTPPacketListener* listener)
    : RTPPacketBuilder(payloadType, port, listener) {
    queue_.reserve(packetsInOne);
    setSdpAttributes("a=rtpmap:33 MP2T/90000");
}

void RTPPacketBuilderMpeg2ts::onNAL(std::unique_ptr<NAL> unit) {
    if (unit->streamType() != StreamType::mpeg2ts || !unit->timing.hasPts) return;
    queue_.push_back(std::move(unit));
    if (queue_.size() == packetsInOne) sendQueue();
}

void RTPPacketBuilderMpeg2ts::sendQueue() {
    const SampleTiming timing = in90k(queue_.front()->timing);
    const auto pts = static_cast<std::uint64_t>(timing.pts);
    auto packet = std::make_unique<RTPMediaPacket>(std::move(queue_.front()), 0, std::vector<std::uint8_t>{},
                                                   payloadType());
    for (std::size_t i = 1; i < queue_.size(); ++i) packet->addChunk(std::move(queue_[i]));
    queue_.clear();
    packet->stamp(sequenceCounter(), false, videoClockRate, pts, pts, timing.discontinuity != 0);
    deliverPacket(std::move(packet));
}

void RTPPacketBuilderMpeg2ts::onEndOfStream() {
    if (!queue_.empty()) sendQueue();
    deliverPacket(nullptr);
}

}  // namespace mvrtpfec
