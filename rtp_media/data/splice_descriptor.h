#pragma once

#include <vector>

#include "rtp_media/data/splice_info_section.h"

namespace mvrtpfec {

/// Parses a descriptor loop (ANSI/SCTE 35, 10). Throws SpliceInfoException "Bad splice descriptor size" for a
/// descriptor that is longer than the loop or shorter than what it must hold.
std::vector<SpliceDescriptor> parseSpliceDescriptors(std::span<const std::uint8_t> loop);

}  // namespace mvrtpfec
