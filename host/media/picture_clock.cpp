#include "host/media/picture_clock.h"

#include <array>
#include <bit>

#include "host/media/unit_part.h"
#include "rtp_media/bits/bit_reader.h"
#include "rtp_media/bits/start_code_search.h"

namespace mvrtpfec {

namespace {

using Bytes = std::span<const std::uint8_t>;

bool hasPicture(NAL& unit) {
    constexpr unsigned vopStart = 0xB6;
    if (unit.streamType() != StreamType::mpeg4Visual) return true;
    return unit.header() && unit.header()->value >= vopStart;
}

}  // namespace

std::optional<std::int64_t> EvenPictureClock::timeOf(NAL& unit) {
    const std::int64_t time = rate_.timeOf(next_);
    if (hasPicture(unit)) ++next_;
    return time;
}

std::optional<std::int64_t> HevcClock::timeOf(NAL& unit) {
    const UnitPart part = partOf(unit);
    if (part == UnitPart::picture) ++begun_;
    return rate_.timeOf(part == UnitPart::other || begun_ == 0 ? begun_ : begun_ - 1);
}

std::optional<std::int64_t> Mpeg4Clock::timeOf(NAL& unit) {
    if (!unit.header()) return std::nullopt;
    const unsigned code = unit.header()->value;
    try {
        if (code >= 0x20 && code < 0x30) readLayer(bodyOf(unit));
        if (code == 0xB3) readGroup(bodyOf(unit));
        if (code == 0xB6 && resolution_ != 0) return readPlane(bodyOf(unit));
    } catch (const BitstreamException&) {
        return std::nullopt;
    }
    if (resolution_ == 0) return even_.timeOf(unit);
    return static_cast<std::int64_t>(base_ * unitsOfTime);
}

/// VideoObjectLayer (ISO/IEC 14496-2, 6.2.3) up to vop_time_increment_resolution.
void Mpeg4Clock::readLayer(Bytes bytes) {
    constexpr unsigned extendedAspect = 15;
    constexpr unsigned grayscale = 3;
    constexpr std::size_t vbvParameters = 79;
    BitReader bits(bytes);
    bits.skip(1 + 8);
    unsigned version = 1;
    if (bits.flag()) {
        version = bits.bits(4);
        bits.skip(3);
    }
    if (bits.bits(4) == extendedAspect) bits.skip(16);
    if (bits.flag()) {
        bits.skip(2 + 1);
        if (bits.flag()) bits.skip(vbvParameters);
    }
    if (bits.bits(2) == grayscale && version != 1) bits.skip(4);
    bits.skip(1);
    resolution_ = bits.bits(16);
}

/// Group_of_VideoObjectPlane (6.2.4): the base becomes its time code.
void Mpeg4Clock::readGroup(Bytes bytes) {
    BitReader bits(bytes);
    const std::uint64_t hours = bits.bits(5);
    const std::uint64_t minutes = bits.bits(6);
    bits.skip(1);
    base_ = (hours * 60 + minutes) * 60 + bits.bits(6);
}

/// VideoObjectPlane (6.2.5) up to vop_time_increment.
std::optional<std::int64_t> Mpeg4Clock::readPlane(Bytes bytes) {
    constexpr unsigned bidirectional = 2;
    BitReader bits(bytes);
    const bool isB = bits.bits(2) == bidirectional;
    std::uint64_t seconds = 0;
    while (bits.flag()) ++seconds;
    bits.skip(1);
    const auto width = static_cast<unsigned>(std::bit_width(resolution_ - 1U));
    const std::uint64_t increment = bits.bits(width == 0 ? 1 : width);
    if (!isB) {
        previousBase_ = base_;
        base_ += seconds;
    }
    const std::uint64_t whole = isB ? previousBase_ + seconds : base_;
    return static_cast<std::int64_t>(whole * unitsOfTime + increment * unitsOfTime / resolution_);
}

std::optional<std::int64_t> H263Clock::timeOf(NAL& unit) {
    constexpr FrameRate step{30000, 1001};
    const Bytes bytes = unit.bytes();
    if (bytes.size() < 4) return std::nullopt;
    const auto reference = static_cast<std::uint8_t>(bytes[2] << 6 | bytes[3] >> 2);
    if (reference_) steps_ += static_cast<std::uint8_t>(reference - *reference_);
    reference_ = reference;
    return step.timeOf(steps_);
}

std::optional<std::int64_t> Mpeg2Clock::timeOf(NAL& unit) {
    const Found found = inspect(unit.bytes());
    if (found.rate) rate_ = *found.rate;
    const std::int64_t time = FrameRate{2 * rate_.frames, rate_.seconds}.timeOf(fields_);
    fields_ += found.fields;
    return time;
}

Mpeg2Clock::Found Mpeg2Clock::inspect(Bytes bytes) {
    // ISO/IEC 13818-2, table 6-4.
    constexpr std::array<FrameRate, 9> rates{
        {{25, 1}, {24000, 1001}, {24, 1}, {25, 1}, {30000, 1001}, {30, 1}, {50, 1}, {60000, 1001}, {60, 1}}};
    constexpr unsigned codingExtension = 8;
    constexpr unsigned wholeFrame = 3;
    Found found;
    for (std::size_t at = findStartCode(bytes); at < bytes.size(); at = findStartCode(bytes)) {
        bytes = bytes.subspan(at);
        if (bytes.size() < 8) break;
        const unsigned code = bytes[3];
        if (code == 0xB3 && (bytes[7] & 0x0FU) < rates.size()) found.rate = rates.at(bytes[7] & 0x0FU);
        if (code == 0x00) found.fields = 2;
        if (code == 0xB5 && bytes[4] >> 4U == codingExtension)
            found.fields = (bytes[6] & 3U) == wholeFrame ? 2 : 1;
        if (code >= 0x01 && code <= 0xAF) break;
        bytes = bytes.subspan(3);
    }
    return found;
}

}  // namespace mvrtpfec
