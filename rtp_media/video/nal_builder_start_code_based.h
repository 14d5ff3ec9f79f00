#pragma once

#include "rtp_media/video/nal_builder_start_patterns.h"
#include "rtp_media/video/nal_h263.h"
#include "rtp_media/video/nal_mpeg4_visual.h"
#include "rtp_media/video/nal_prores.h"

namespace mvrtpfec {

/// Parser for the formats whose unit class has a table of start patterns.
template <class Unit>
class NalBuilderStartCodeBased final : public NALBuilderStartPatterns {
public:
    NalBuilderStartCodeBased() : NALBuilderStartPatterns(Unit::startPatterns) {}

private:
    std::unique_ptr<NAL> takeUnit(UnitCutter& cutter, std::size_t size) const override {
        return cutter.take<Unit>(size);
    }
};

}  // namespace mvrtpfec
