#pragma once

#include <cstdint>
#include <span>

namespace mvrtpfec {

/// What stands between the RTP header, with its CSRC list and extension, and the padding (RFC 3550
/// sections 5.1 and 5.3.1); nothing when they don't fit the packet.
std::span<const std::uint8_t> mediaPayload(std::span<const std::uint8_t> packet);

}  // namespace mvrtpfec
