#pragma once

#include <cstdint>
#include <span>

#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// What a NAL unit of H.264 or HEVC is to the pictures.
enum class UnitPart {
    other,         ///< parameter sets, SEI, delimiters and the like
    continuation,  ///< a further slice
    picture,       ///< the first slice of a picture
};

/// The first slice has first_mb_in_slice 0 (ISO/IEC 14496-10, 7.3.3) or first_slice_segment_in_pic_flag
/// (ISO/IEC 23008-2, 7.3.6.1).
UnitPart partOf(NAL& unit);

/// The bytes behind the header byte, or behind the value of a start code; empty where there is none.
std::span<const std::uint8_t> bodyOf(NAL& unit);

}  // namespace mvrtpfec
