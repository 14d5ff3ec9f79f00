#pragma once

#include <string>

#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// What a unit is, in the words of its own format: the NAL unit type, the frame's or the picture's type, the
/// command, the PID.
std::string unitKind(NAL& unit);

}  // namespace mvrtpfec
