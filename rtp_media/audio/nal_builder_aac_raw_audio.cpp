#include "rtp_media/audio/nal_builder_aac_raw_audio.h"

#include "rtp_media/audio/aac_raw_record.h"
#include "rtp_media/audio/nal_aac_raw.h"
#include "rtp_media/chain/sample_bytes.h"

namespace mvrtpfec {

namespace {

bool mayBeginRecord(std::span<const std::uint8_t> bytes) {
    const auto extent = aacRawExtent(bytes);
    // A last record that was cut off shows by its header that the one before it is whole.
    return extent.size != 0 || extent.headerSize > AacRawRecord::fixedSize;
}

/// Of the record that the rest of a sample begins with; 0 when none does or it is damaged.
std::size_t wholeRecordSize(std::span<const std::uint8_t> rest) {
    if (isAacRawRecord(rest)) return rest.size();
    const std::size_t size = aacRawExtent(rest).size;
    return size < rest.size() && mayBeginRecord(rest.subspan(size)) ? size : 0;
}

}  // namespace

void NALBuilderAACRawAudio::input(IMediaData* sample) {
    for (auto rest = sampleBytes(*sample); !rest.empty();) {
        const std::size_t size = wholeRecordSize(rest);
        if (size != 0) emitRecord(*sample, rest.first(size));
        rest = rest.subspan(size != 0 ? size : 1);
    }
}

void NALBuilderAACRawAudio::emitRecord(IMediaData& sample, std::span<const std::uint8_t> record) {
    auto unit = std::make_unique<NALAACRaw>(static_cast<std::int32_t>(record.size()));
    unit->append(record);
    unit->timing = timingOf(sample);
    const auto time = aacRawTime(record);
    if (unit->timing.hasPts == 0 && time) {
        unit->timing.hasPts = 1;
        unit->timing.pts = *time;
    }
    emit(std::move(unit));
}

}  // namespace mvrtpfec
