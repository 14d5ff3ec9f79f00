#include "host/media/h264_clock.h"

#include <algorithm>
#include <vector>

#include "host/media/unit_part.h"
#include "rtp_media/bits/bit_reader.h"
#include "rtp_media/bits/emulation_prevention.h"
#include "rtp_media/h264/avc_sps.h"

namespace mvrtpfec {

namespace {

constexpr unsigned typeSps = 7;

}  // namespace

std::optional<std::int64_t> H264Clock::timeOf(NAL& unit) {
    if (unit.header() && (unit.header()->value & 0x1FU) == typeSps) takeSps(unit);
    if (!rate_) return std::nullopt;
    const UnitPart part = partOf(unit);
    if (part == UnitPart::picture) {
        current_ = next_;
        next_ += isField(unit) ? 1U : 2U;
    }
    return FrameRate{2 * rate_->frames, rate_->seconds}.timeOf(part == UnitPart::other ? next_ : current_);
}

void H264Clock::takeSps(NAL& unit) {
    try {
        const auto header = *unit.header();
        const AvcSps sps =
            parseAvcSps(unit.rbsp().subspan(static_cast<std::size_t>(header.startCodeLength) + 1));
        layout_ = {sps.separateColourPlanes, sps.frameMbsOnly, sps.log2MaxFrameNumMinus4 + 4};
        const bool fits = sps.hasTiming() && sps.vui.timeScale <= UINT32_MAX / 2 && sps.vui.timeScale != 0 &&
                          sps.vui.numUnitsInTick <= UINT32_MAX / 2;
        if (!rate_ && fits) rate_ = FrameRate{sps.vui.timeScale, 2 * sps.vui.numUnitsInTick};
    } catch (const BitstreamException&) {
        return;
    }
}

/// field_pic_flag (ISO/IEC 14496-10, 7.3.3).
bool H264Clock::isField(NAL& unit) const {
    if (layout_.frameMbsOnly) return false;
    constexpr std::size_t farthest = 16;  ///< bytes, more than the fields up to there take
    const auto body = bodyOf(unit);
    std::vector<std::uint8_t> rbsp;
    removeEmulationPrevention(body.first(std::min(body.size(), farthest)), rbsp);
    BitReader bits(rbsp);
    try {
        for (int i = 0; i < 3; ++i) bits.unsignedExpGolomb();
        if (layout_.separateColourPlanes) bits.skip(2);
        bits.skip(layout_.frameNumBits);
        return bits.flag();
    } catch (const BitstreamException&) {
        return false;
    }
}

}  // namespace mvrtpfec
