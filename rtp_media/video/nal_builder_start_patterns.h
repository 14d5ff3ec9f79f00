#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "rtp_media/chain/nal_builder.h"
#include "rtp_media/chain/unit_cutter.h"
#include "rtp_media/video/start_pattern.h"

namespace mvrtpfec {

/// Base of the parsers whose units begin with a pattern: a unit runs from one match to the next, the last one
/// to the end of the stream. Of patterns that end at the same byte the longest counts.
class NALBuilderStartPatterns : public NALBuilder {
public:
    void input(IMediaData* sample) override;
    void flush() override;

protected:
    /// All patterns begin with the same byte. They are not copied.
    explicit NALBuilderStartPatterns(std::span<const StartPattern> patterns);

    /// Whether a match whose last byte this is begins a unit; `unitOpen`: whether one is under way.
    virtual bool beginsUnit(std::uint8_t last, bool unitOpen);
    virtual std::unique_ptr<NAL> takeUnit(UnitCutter& cutter, std::size_t size) const = 0;

private:
    void scan(std::span<const std::uint8_t> bytes);
    void scanEdge(std::span<const std::uint8_t> bytes);
    void scanInside(std::span<const std::uint8_t> bytes);
    void matchAt(std::ptrdiff_t index, const StartPattern& pattern, std::uint8_t last);
    void keepTail(std::span<const std::uint8_t> bytes);
    void reset();

    std::span<const StartPattern> patterns_;
    std::size_t mostBefore_ = 0;  ///< bytes that a unit may have begun with when none is seen to be open
    UnitCutter cutter_;
    std::uint8_t tail_[StartPattern::longest - 1]{};  ///< the last bytes of the samples before
    std::size_t tailSize_ = 0;
    std::ptrdiff_t lastMatchEnd_ = noMatch;  ///< in the present sample

    static constexpr std::ptrdiff_t noMatch = -1000;
};

}  // namespace mvrtpfec
