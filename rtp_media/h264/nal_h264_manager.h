#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "rtp_media/h264/avc_pps.h"
#include "rtp_media/h264/avc_sei.h"
#include "rtp_media/h264/avc_sps.h"

namespace mvrtpfec {

/// Keeps the parameter sets of a stream and works its times out from the buffering period and picture timing
/// messages (ISO/IEC 14496-10, C.1.2), for streams whose samples carry none. All RBSPs from behind the NAL
/// header byte on.
class NALH264Manager {
public:
    static constexpr std::uint64_t clockRate = 90000;

    /// In ticks of 90 kHz.
    struct Times {
        std::uint64_t presentation = 0;
        std::uint64_t decode = 0;
    };

    virtual ~NALH264Manager() = default;

    /// Takes a parameter set in. Throw BitstreamException; the set known so far stays then.
    const AvcSps& takeSps(std::span<const std::uint8_t> rbsp);
    void takePps(std::span<const std::uint8_t> rbsp);

    /// Takes SEI messages in. False when they, with those before, don't tell a time, and for malformed ones.
    bool takeSei(std::span<const std::uint8_t> rbsp);

    /// Times of the picture that a slice belongs to; none where parameter sets or messages are missing, or
    /// the slice is malformed. `rbsp` may end behind the slice header.
    std::optional<Times> takeSlice(std::span<const std::uint8_t> rbsp, std::uint8_t nalHeader);

    /// The same for a unit of the picture that has no slice header.
    std::optional<Times> pictureTimes();

    /// The next picture with times is presented at `time`, ticks of 90 kHz.
    void resetAnchor(std::uint64_t time);
    bool isAnchorValid() const noexcept { return anchorValid_; }
    /// The messages began a new count, of which no picture has been timed yet: without a new anchor its first
    /// would be presented at 0.
    bool isAnchorLost() const noexcept { return anchorLost_; }

private:
    static constexpr std::uint32_t unknown = 0xFFFFFFFF;

    /// All that the messages have told so far; counts in clock ticks of the stream.
    struct SeiTiming {
        std::uint32_t initialRemovalDelay = unknown;
        std::uint32_t removalDelay = unknown;
        std::uint32_t outputDelay = unknown;
        std::uint32_t previousRemovalDelay = unknown;
        std::uint64_t base = 0;            ///< count at the picture from which removalDelay counts
        std::uint64_t bufferingCount = 0;  ///< at the last picture with a buffering period
        bool bufferingOpened = false;      ///< by the picture before the present one
        bool bufferingHere = false;        ///< the present picture has a buffering period

        std::uint64_t removalCount() const { return base + removalDelay; }
        bool isKnown() const {
            return initialRemovalDelay != unknown && removalDelay != unknown && outputDelay != unknown;
        }
    };

    void takeBufferingPeriod(const AvcBufferingPeriod& period);
    bool followRemovalDelay();
    void forgetTiming();
    std::uint64_t removalDelayModulus() const;
    std::optional<Times> timesBy(const AvcSps& sps);

    std::array<std::optional<AvcSps>, AvcSps::mostId + 1> spsById_;
    std::array<std::unique_ptr<AvcPps>, AvcPps::mostId + 1> ppsById_;
    std::optional<std::uint32_t> currentSps_;
    SeiTiming timing_;
    std::uint64_t anchorTime_ = 0;
    bool anchorValid_ = false;
    bool anchorLost_ = false;
    std::uint64_t firstOutputCount_ = 0;  ///< removal count and output delay of the anchor's picture
};

}  // namespace mvrtpfec
