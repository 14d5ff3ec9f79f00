#pragma once

#include "host/media/unit_clock.h"

namespace mvrtpfec {

/// H.264 at an even rate: the one given, or that of the first sequence parameter set with VUI timing, before
/// which nothing has a time. A field has half a frame's duration.
class H264Clock : public UnitClock {
public:
    explicit H264Clock(const std::optional<FrameRate>& rate) : rate_(rate) {}

    std::optional<std::int64_t> timeOf(NAL& unit) override;

private:
    /// What a slice header must be read with up to field_pic_flag.
    struct SliceLayout {
        bool separateColourPlanes = false;
        bool frameMbsOnly = true;
        unsigned frameNumBits = 4;
    };

    void takeSps(NAL& unit);
    bool isField(NAL& unit) const;

    std::optional<FrameRate> rate_;
    SliceLayout layout_;
    std::uint64_t current_ = 0;  ///< of the picture that has begun, in fields
    std::uint64_t next_ = 0;
};

}  // namespace mvrtpfec
