#include "core/rtp_packet.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace mvrtpfec {

RtpPacket::RtpPacket(const std::uint8_t* bytes, std::size_t count)
    : size_(count), view{reserve(count), static_cast<std::uint16_t>(count)} {
    if (count > 0) std::memcpy(view.data, bytes, count);
}

RtpPacket::RtpPacket(Unwritten)
    : size_(maxFecPacketSize), view{reserve(size_), static_cast<std::uint16_t>(size_)} {}

RtpPacket::RtpPacket() : RtpPacket(Unwritten{}) {
    std::memset(view.data, 0, size_);
}

/// A buffer for `count` bytes, their values undetermined.
std::uint8_t* RtpPacket::reserve(std::size_t count) {
    if (count <= maxFecPacketSize) return inline_.data() + lead;
    large_ = std::make_unique_for_overwrite<std::uint8_t[]>(lead + count);
    return large_.get() + lead;
}

void RtpPacket::resize(std::size_t count) {
    const auto old = std::exchange(large_, nullptr);
    const std::uint8_t* bytes = view.data;
    const std::size_t kept = std::min(size_, count);
    view.data = reserve(count);
    if (view.data != bytes) std::memcpy(view.data, bytes, kept);
    std::memset(view.data + kept, 0, count - kept);
    size_ = count;
}

}  // namespace mvrtpfec
