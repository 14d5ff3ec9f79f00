#include "engine/stream_drain.h"

#include <array>

#include "core/fec_packet.h"
#include "core/same_run.h"
#include "core/serial_distance.h"

namespace mvrtpfec {

void StreamDrain::observe(ConstRtpPacketView packet) {
    if (packet.payloadType() == mediaPayloadType)
        observeMedia(packet);
    else if (packet.payloadType() == fecPayloadType && packet.length >= fecPayloadOffset)
        observeFec(packet);
}

/// A number behind the newest is late; another source, or a second such number in order, is a restart.
void StreamDrain::observeMedia(ConstRtpPacketView media) {
    const std::uint16_t number = media.sequenceNumber();
    const int ahead = newest_ ? serialDistance(*newest_, number) : 1;
    const bool goesOn = ahead > 0 || ahead < -sameRun;
    const bool restarts = media.ssrc() != ssrc_ || (behind_ && serialDistance(*behind_, number) == 1);
    if (goesOn || restarts) newest_ = number;
    behind_ = ahead < 0 && !goesOn ? std::optional(number) : std::nullopt;
    ssrc_ = media.ssrc();
}

/// An FEC packet leaves its sender after all the packets it protects, so one whose group has begun tells
/// of media packets that were sent last and never came.
void StreamDrain::observeFec(ConstRtpPacketView fec) {
    if (!newest_) return;
    const ProtectedRange range = protectedRange(fec);
    const int last = serialDistance(*newest_, range.last);
    if (serialDistance(*newest_, range.base) <= 0 && last > 0 && last < sameRun) newest_ = range.last;
}

bool StreamDrain::begin() {
    if (!newest_) return false;
    first_ = static_cast<std::uint16_t>(*newest_ + 1);
    return true;
}

std::unique_ptr<RtpPacket> StreamDrain::padding(std::uint32_t index) const {
    std::array<std::uint8_t, rtpHeaderSize> bytes{versionTwo, mediaPayloadType};
    writeBigEndian16(&bytes[2], static_cast<std::uint16_t>(*first_ + index));
    writeBigEndian32(&bytes[8], ssrc_);
    return std::make_unique<RtpPacket>(bytes.data(), bytes.size());
}

bool StreamDrain::isPadding(ConstRtpPacketView packet) const {
    return first_ && packet.length == rtpHeaderSize && serialDistance(*first_, packet.sequenceNumber()) >= 0;
}

}  // namespace mvrtpfec
