#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "rtp_media/chain/rtp_packet_builder.h"

namespace mvrtpfec {

/// A session description (RFC 8866) of one stream, sent to this machine, that players open. The packetizer's
/// attributes are complete.
std::string sessionText(const RTPPacketBuilder& packetizer, bool isVideo);

/// A text whose lines end with, or are parted by, backslashes, with the line ends of a session description
/// instead.
std::string withLineEnds(std::string_view text);

/// Writes it. Throws FileError.
void writeSession(const std::filesystem::path& path, const std::string& text);

}  // namespace mvrtpfec
