#pragma once

#include <cstddef>

#include "rtp_media/bits/bit_reader.h"

namespace mvrtpfec {

/// Reads over a program_config_element (ISO/IEC 14496-3, 4.4.1.1). Its byte alignment counts from
/// `configStart`, the bit where the AudioSpecificConfig around it begins.
void skipProgramConfigElement(BitReader& bits, std::size_t configStart);

}  // namespace mvrtpfec
