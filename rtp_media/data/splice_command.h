#pragma once

#include "rtp_media/data/splice_info_section.h"

namespace mvrtpfec {

/// Parses a command (ANSI/SCTE 35, 9.7) and gives the bytes that it took; a private command takes all. Throws
/// SpliceInfoException "Unmanaged command type", and BitstreamException for one that ends too early.
std::size_t parseSpliceCommand(std::uint8_t type, std::span<const std::uint8_t> bytes,
                               SpliceCommand& command);

}  // namespace mvrtpfec
