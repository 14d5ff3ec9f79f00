#pragma once

#include "rtp_media/video/nal_builder_start_patterns.h"

namespace mvrtpfec {

/// Cuts MPEG-2 video into pictures: a unit begins with the sequence header, group of pictures header or
/// picture header that first follows the picture before; what a sequence end code closes ends with it.
class NALBuilderMPEG2 final : public NALBuilderStartPatterns {
public:
    NALBuilderMPEG2();

private:
    bool beginsUnit(std::uint8_t code, bool unitOpen) override;
    std::unique_ptr<NAL> takeUnit(UnitCutter& cutter, std::size_t size) const override;

    bool pictureSeen_ = false;  ///< the open unit has its picture; the next header begins another
};

}  // namespace mvrtpfec
