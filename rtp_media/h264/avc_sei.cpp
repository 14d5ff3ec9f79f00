#include "rtp_media/h264/avc_sei.h"

#include "rtp_media/bits/bit_reader.h"

namespace mvrtpfec {

namespace {

constexpr std::uint32_t bufferingPeriodType = 0;
constexpr std::uint32_t pictureTimingType = 1;

std::vector<AvcBufferingPeriod::Removal> readRemovals(BitReader& reader, const AvcHrd& hrd) {
    const unsigned length = hrd.initialRemovalDelayLengthMinus1 + 1U;
    std::vector<AvcBufferingPeriod::Removal> removals(hrd.cpbs.size());
    for (auto& removal : removals) {
        removal.delay = reader.bits(length);
        removal.offset = reader.bits(length);
    }
    return removals;
}

std::optional<AvcBufferingPeriod> readBufferingPeriod(BitReader& reader,
                                                      std::span<const std::optional<AvcSps>> sets) {
    AvcBufferingPeriod period;
    period.spsId = reader.unsignedExpGolomb(AvcSps::mostId);
    const auto& sps = sets[period.spsId];
    if (!sps) return std::nullopt;
    if (sps->hasVui && sps->vui.hasNalHrd) period.nal = readRemovals(reader, sps->vui.nalHrd);
    if (sps->hasVui && sps->vui.hasVclHrd) period.vcl = readRemovals(reader, sps->vui.vclHrd);
    return period;
}

void readTimeOfDay(BitReader& reader, AvcPictureTiming::Clock& clock, bool full) {
    if (full) {
        clock.seconds = static_cast<std::uint8_t>(reader.bits(6));
        clock.minutes = static_cast<std::uint8_t>(reader.bits(6));
        clock.hours = static_cast<std::uint8_t>(reader.bits(5));
        return;
    }
    if (!reader.flag()) return;
    clock.seconds = static_cast<std::uint8_t>(reader.bits(6));
    if (!reader.flag()) return;
    clock.minutes = static_cast<std::uint8_t>(reader.bits(6));
    if (reader.flag()) clock.hours = static_cast<std::uint8_t>(reader.bits(5));
}

std::int32_t readOffset(BitReader& reader, unsigned length) {
    if (length == 0) return 0;
    const std::uint32_t bits = reader.bits(length);
    const std::uint32_t sign = std::uint32_t{1} << (length - 1);
    return static_cast<std::int32_t>((bits ^ sign) - sign);
}

AvcPictureTiming::Clock readClock(BitReader& reader, unsigned offsetLength) {
    AvcPictureTiming::Clock clock;
    clock.type = static_cast<std::uint8_t>(reader.bits(2));
    clock.nuitFieldBased = reader.flag();
    clock.countingType = static_cast<std::uint8_t>(reader.bits(5));
    const bool full = reader.flag();
    clock.discontinuity = reader.flag();
    clock.countDropped = reader.flag();
    clock.frames = static_cast<std::uint8_t>(reader.bits(8));
    readTimeOfDay(reader, clock, full);
    clock.offset = readOffset(reader, offsetLength);
    return clock;
}

/// NumClockTS (table D-1); 0 for what is reserved.
std::size_t clockCount(std::uint8_t picStruct) {
    constexpr std::array<std::uint8_t, 9> counts{1, 1, 1, 2, 2, 3, 3, 2, 3};
    return picStruct < counts.size() ? counts[picStruct] : 0;
}

AvcPictureTiming readPictureTiming(BitReader& reader, const AvcSps& sps) {
    AvcPictureTiming timing;
    const AvcHrd* const hrd = sps.hrd();
    if (hrd != nullptr) {
        timing.removalDelay = reader.bits(hrd->removalDelayLengthMinus1 + 1U);
        timing.outputDelay = reader.bits(hrd->outputDelayLengthMinus1 + 1U);
    }
    if (!sps.hasVui || !sps.vui.picStructPresent) return timing;
    timing.picStruct = static_cast<std::uint8_t>(reader.bits(4));
    // Without a HRD the offset is of 24 bits (E.2.2).
    const unsigned offsetLength = hrd != nullptr ? hrd->timeOffsetLength : 24;
    for (std::size_t i = 0; i < clockCount(*timing.picStruct); ++i) {
        if (reader.flag()) timing.clocks[i] = readClock(reader, offsetLength);
    }
    return timing;
}

/// A number in bytes of 255 and a last one (7.3.2.3.1).
std::uint32_t readByteSum(BitReader& reader) {
    std::uint32_t sum = 0;
    std::uint32_t byte = 255;
    while (byte == 255) sum += byte = reader.bits(8);
    return sum;
}

}  // namespace

AvcSei parseAvcSei(std::span<const std::uint8_t> rbsp, const AvcSps* current,
                   std::span<const std::optional<AvcSps>> sets) {
    AvcSei sei;
    // Behind the last message stand the stop bit alone, in a byte of its own, and zeros.
    while (!rbsp.empty() && rbsp.back() == 0) rbsp = rbsp.first(rbsp.size() - 1);
    BitReader reader(rbsp);
    while (reader.remaining() > 8) {
        const std::uint32_t type = readByteSum(reader);
        const std::size_t size = readByteSum(reader);
        const std::size_t at = reader.position() / 8;
        reader.skip(size * 8);
        BitReader message(rbsp.subspan(at, size));
        if (type == bufferingPeriodType) sei.bufferingPeriod = readBufferingPeriod(message, sets);
        if (type == pictureTimingType && current != nullptr)
            sei.pictureTiming = readPictureTiming(message, *current);
    }
    return sei;
}

}  // namespace mvrtpfec
