#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "rtp_media/chain/nal_builder.h"

namespace mvrtpfec {

/// Splits samples of AacRawRecords into units, one record each. A sample normally holds one; several are
/// fine. Records end with their sample: one that doesn't, or behind which neither the sample ends nor another
/// begins, is damaged and dropped, and the hunt goes on behind its first byte, in this sample alone. A unit
/// is timed by its sample, or by its record where the sample has no time.
class NALBuilderAACRawAudio final : public NALBuilder {
public:
    void input(IMediaData* sample) override;
    void flush() override { endOfStream(); }

private:
    void emitRecord(IMediaData& sample, std::span<const std::uint8_t> record);
};

}  // namespace mvrtpfec
