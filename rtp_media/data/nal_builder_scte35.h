#pragma once

#include "rtp_media/chain/nal_builder.h"

namespace mvrtpfec {

/// Makes each sample a unit: an 8-byte number and a splice_info_section. `input` throws SpliceInfoException
/// for a sample that holds none; the next one is taken as if nothing had been.
class NALBuilderSCTE35 final : public NALBuilder {
public:
    void input(IMediaData* sample) override;
    void flush() override { endOfStream(); }
};

}  // namespace mvrtpfec
