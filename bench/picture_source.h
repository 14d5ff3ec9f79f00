#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "platform/graph/media_filters.h"
#include "rtp_media/chain/nal_builder.h"

namespace mvrtpfec::bench {

/// Gives out pictures of MPEG-4 Visual, one packet each.
class PictureSource : public NALBuilder {
public:
    explicit PictureSource(std::size_t payloadSize = 1300) : picture_(payloadSize, 0x55) {
        picture_[0] = picture_[1] = 0;
        picture_[2] = 1;
        picture_[3] = 0xB6;
    }

    void input(IMediaData*) override {}
    void flush() override {}

    /// `time` in 100 ns
    void give(REFERENCE_TIME time) {
        auto unit =
            std::make_unique<NAL>(StreamType::mpeg4Visual, static_cast<std::int32_t>(picture_.size()));
        unit->append(picture_);
        unit->timing.hasPts = 1;
        unit->timing.pts = time;
        emit(std::move(unit));
    }

private:
    std::vector<std::uint8_t> picture_;
};

}  // namespace mvrtpfec::bench
