#include "host/media/unit_clock.h"

#include <utility>

#include "host/media/audio_clock.h"
#include "host/media/h264_clock.h"
#include "host/media/picture_clock.h"

namespace mvrtpfec {

std::unique_ptr<UnitClock> makeUnitClock(StreamType type, const std::optional<FrameRate>& rate) {
    switch (type) {
        case StreamType::mpeg1Audio:
        case StreamType::ac3:
        case StreamType::aacAdts:
        case StreamType::aacLatm:
        case StreamType::aacRaw:
            return std::make_unique<AudioClock>();
        case StreamType::h264:
            return std::make_unique<H264Clock>(rate);
        case StreamType::hevc:
            if (!rate) return nullptr;
            return std::make_unique<HevcClock>(*rate);
        case StreamType::mpeg2Video:
        case StreamType::mpeg4Visual:
        case StreamType::h263:
        case StreamType::proRes:
            break;
        default:
            return nullptr;
    }
    if (rate) return std::make_unique<EvenPictureClock>(*rate);
    if (type == StreamType::mpeg4Visual) return std::make_unique<Mpeg4Clock>();
    if (type == StreamType::h263) return std::make_unique<H263Clock>();
    if (type == StreamType::mpeg2Video) return std::make_unique<Mpeg2Clock>();
    return std::make_unique<EvenPictureClock>(FrameRate());
}

void UnitTimer::onNAL(std::unique_ptr<NAL> unit) {
    if (clock_ != nullptr && unit->timing.hasPts == 0) {
        if (const auto time = clock_->timeOf(*unit)) {
            unit->timing.hasPts = 1;
            unit->timing.pts = *time;
        }
    }
    next_.onNAL(std::move(unit));
}

}  // namespace mvrtpfec
