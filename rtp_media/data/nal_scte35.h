#pragma once

#include "rtp_media/chain/nal.h"
#include "rtp_media/data/splice_info_section.h"

namespace mvrtpfec {

/// A cue message: an 8-byte big-endian number of the writer's, then the section, which is here parsed too.
class NALSCTE35 final : public NAL {
public:
    static constexpr std::size_t numberSize = 8;

    explicit NALSCTE35(std::int32_t capacity) : NAL(StreamType::scte35, capacity) {}

    SpliceInfoSection section;
};

}  // namespace mvrtpfec
