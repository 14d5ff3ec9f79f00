#include "host/media/packet_recorder.h"

#include <algorithm>

namespace mvrtpfec {

namespace {

constexpr std::uint64_t ticksPerSecond = 90000;

std::chrono::nanoseconds durationOf(std::uint64_t ticks) {
    const auto whole = std::chrono::seconds(ticks / ticksPerSecond);
    return whole + std::chrono::nanoseconds(ticks % ticksPerSecond * 1'000'000 / 90);
}

}  // namespace

void PacketRecorder::onPacket(std::unique_ptr<RTPMediaPacket> packet) {
    packet->writeTimestamp(0);
    follow(*packet);
    datagram_.payload.resize(packet->serializedSize());
    const auto sizes = packet->serialize(datagram_.payload.data(), ssrc_);
    ++figures_.packets;
    figures_.bytes += sizes.total;
    figures_.clockRate = packet->clockRate();
    sink_.write(datagram_);
}

void PacketRecorder::follow(const RTPMediaPacket& packet) {
    const std::uint64_t sent = packet.ptsOrDts();
    if (!start_) {
        start_ = sent;
        earliest_ = latest_ = packet.pts();
    }
    earliest_ = std::min(earliest_, packet.pts());
    latest_ = std::max(latest_, packet.pts());
    figures_.span = latest_ - earliest_;
    if (sent > *start_) datagram_.time = std::max(datagram_.time, durationOf(sent - *start_));
}

}  // namespace mvrtpfec
