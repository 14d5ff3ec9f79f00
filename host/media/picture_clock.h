#pragma once

#include "host/media/unit_clock.h"

namespace mvrtpfec {

/// Pictures one behind the other at an even rate.
class EvenPictureClock : public UnitClock {
public:
    explicit EvenPictureClock(FrameRate rate) : rate_(rate) {}

    /// A unit without a picture has the time of the next one.
    std::optional<std::int64_t> timeOf(NAL& unit) override;

private:
    FrameRate rate_;
    std::uint64_t next_ = 0;
};

/// HEVC at an even rate.
class HevcClock : public UnitClock {
public:
    explicit HevcClock(FrameRate rate) : rate_(rate) {}

    std::optional<std::int64_t> timeOf(NAL& unit) override;

private:
    FrameRate rate_;
    std::uint64_t begun_ = 0;  ///< pictures
};

/// By vop_time_increment (ISO/IEC 14496-2, 6.3.5), 25 a second before there is a video object layer.
class Mpeg4Clock : public UnitClock {
public:
    std::optional<std::int64_t> timeOf(NAL& unit) override;

private:
    void readLayer(std::span<const std::uint8_t> bytes);
    void readGroup(std::span<const std::uint8_t> bytes);
    std::optional<std::int64_t> readPlane(std::span<const std::uint8_t> bytes);

    EvenPictureClock even_{FrameRate()};
    std::uint32_t resolution_ = 0;  ///< parts of a second, 0 before there is a layer
    std::uint64_t base_ = 0;        ///< seconds, for the next plane that isn't a B-VOP
    std::uint64_t previousBase_ = 0;
};

/// By temporal references, in steps of 1001 / 30000 s (ITU-T H.263, 5.1.2).
class H263Clock : public UnitClock {
public:
    std::optional<std::int64_t> timeOf(NAL& unit) override;

private:
    std::uint64_t steps_ = 0;
    std::optional<std::uint8_t> reference_;
};

/// By the frame rate of the sequence header (ISO/IEC 13818-2, 6.3.3), a field picture with half a frame's
/// duration; 25 a second before there is one.
class Mpeg2Clock : public UnitClock {
public:
    std::optional<std::int64_t> timeOf(NAL& unit) override;

private:
    struct Found {
        std::uint64_t fields = 0;
        std::optional<FrameRate> rate;
    };

    static Found inspect(std::span<const std::uint8_t> bytes);

    FrameRate rate_;
    std::uint64_t fields_ = 0;  ///< so far
};

}  // namespace mvrtpfec
