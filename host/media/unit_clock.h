#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "host/media/frame_rate.h"
#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// Says when the units of a stream without times are due: by what the stream itself says, or by a frame rate.
class UnitClock {
public:
    virtual ~UnitClock() = default;

    /// Presentation time in 100 ns of the unit that comes next in the stream; none when there is nothing to
    /// go by.
    virtual std::optional<std::int64_t> timeOf(NAL& unit) = 0;
};

/// The clock for a stream of this type; null when its units have no time of their own.
///
/// With `rate` the pictures of video are timed evenly in the order in which they stand in the stream; of
/// H.264 and HEVC the parameter sets, SEI and delimiters before a picture share its time, and a field of a
/// frame has half its duration. Without, MPEG-4 Visual is timed by its own time stamps, H.263 by its temporal
/// references, MPEG-2 video by the frame rate of its sequence header, H.264 by the one of its first sequence
/// parameter set that has one, and what says nothing at 25 a second; HEVC isn't timed, nor is H.264 where it
/// says nothing. Audio goes by samples a frame and sample rate.
std::unique_ptr<UnitClock> makeUnitClock(StreamType type, const std::optional<FrameRate>& rate);

/// Gives the units that have no time the clock's, on their way to the next listener. Neither is owned.
class UnitTimer : public NALListener {
public:
    /// A null clock changes nothing.
    UnitTimer(UnitClock* clock, NALListener& next) : clock_(clock), next_(next) {}

    void onNAL(std::unique_ptr<NAL> unit) override;
    void onEndOfStream() override { next_.onEndOfStream(); }

private:
    UnitClock* clock_;
    NALListener& next_;
};

}  // namespace mvrtpfec
