#include "core/rtp_packet.h"

namespace mvrtpfec {

RtpPacket::RtpPacket(const std::uint8_t* bytes, std::size_t count)
    : buffer_(bytes, bytes + count), view{buffer_.data(), static_cast<std::uint16_t>(count)} {}

RtpPacket::RtpPacket()
    : buffer_(maxFecPacketSize), view{buffer_.data(), static_cast<std::uint16_t>(maxFecPacketSize)} {}

void RtpPacket::resize(std::size_t count) {
    buffer_.resize(count);
    view.data = buffer_.data();
}

}  // namespace mvrtpfec
