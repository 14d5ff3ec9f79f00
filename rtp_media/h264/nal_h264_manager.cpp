#include "rtp_media/h264/nal_h264_manager.h"

#include <utility>

#include "rtp_media/bits/bit_reader.h"
#include "rtp_media/h264/avc_slice_header.h"

namespace mvrtpfec {

namespace {

/// Clock ticks of the stream in ticks of 90 kHz, truncated; of either sign. Whole ticks and the rest apart,
/// since the product of all three outgrows 64 bits within weeks of a stream that counts in 27 MHz.
std::uint64_t ticksOf(std::uint64_t count, std::uint32_t unitsInTick, std::uint32_t timeScale) {
    const std::uint64_t perTick = unitsInTick * NALH264Manager::clockRate;
    const auto rest = static_cast<std::int64_t>(count * (perTick % timeScale));
    return count * (perTick / timeScale) + static_cast<std::uint64_t>(rest / std::int64_t{timeScale});
}

}  // namespace

const AvcSps& NALH264Manager::takeSps(std::span<const std::uint8_t> rbsp) {
    AvcSps sps = parseAvcSps(rbsp);
    const std::uint32_t id = sps.id;
    currentSps_ = id;
    return spsById_[id].emplace(std::move(sps));
}

void NALH264Manager::takePps(std::span<const std::uint8_t> rbsp) {
    std::array<std::uint32_t, AvcSps::mostId + 1> chromaFormats;
    for (std::size_t i = 0; i < chromaFormats.size(); ++i)
        chromaFormats[i] = spsById_[i] ? spsById_[i]->chromaFormatIdc : 1;
    auto pps = std::make_unique<AvcPps>(parseAvcPps(rbsp, chromaFormats));
    const std::uint32_t id = pps->id;
    ppsById_[id] = std::move(pps);
}

bool NALH264Manager::takeSei(std::span<const std::uint8_t> rbsp) {
    AvcSei sei;
    try {
        sei = parseAvcSei(rbsp, currentSps_ ? &*spsById_[*currentSps_] : nullptr, spsById_);
    } catch (const BitstreamException&) {
        return false;
    }
    if (sei.bufferingPeriod) takeBufferingPeriod(*sei.bufferingPeriod);
    const bool timed = sei.pictureTiming && sei.pictureTiming->removalDelay;
    if (timed) {
        timing_.removalDelay = *sei.pictureTiming->removalDelay;
        timing_.outputDelay = *sei.pictureTiming->outputDelay;
    }
    if (!timing_.isKnown()) return false;
    // A unit with other messages, or with a buffering period alone, moves nothing.
    return timed ? followRemovalDelay() : true;
}

void NALH264Manager::takeBufferingPeriod(const AvcBufferingPeriod& period) {
    const auto& removals = !period.nal.empty() ? period.nal : period.vcl;
    if (!removals.empty()) timing_.initialRemovalDelay = removals.front().delay;
    timing_.bufferingHere = true;
    currentSps_ = period.spsId;
}

/// The delay counts from the picture with the last buffering period before the present one. A value that
/// falls without one has wrapped, or the stream is another.
bool NALH264Manager::followRemovalDelay() {
    const std::uint32_t current = timing_.removalDelay;
    const std::uint32_t previous = std::exchange(timing_.previousRemovalDelay, current);
    const bool opened = std::exchange(timing_.bufferingOpened, false);
    if (previous == unknown) return true;
    if (opened) {
        timing_.base = timing_.bufferingCount;
    } else if (current < previous) {
        const std::uint64_t modulus = removalDelayModulus();
        if (modulus <= std::uint64_t{previous} + 2) {
            timing_.base += modulus;
        } else if (current == 0) {
            timing_.base += previous;
        } else {
            forgetTiming();
            return false;
        }
    }
    return true;
}

void NALH264Manager::forgetTiming() {
    timing_ = SeiTiming();
    resetAnchor(0);
    anchorLost_ = true;
}

std::uint64_t NALH264Manager::removalDelayModulus() const {
    const AvcHrd* const hrd = currentSps_ ? spsById_[*currentSps_]->hrd() : nullptr;
    return std::uint64_t{1} << (hrd != nullptr ? hrd->removalDelayLengthMinus1 + 1U : 24U);
}

std::optional<NALH264Manager::Times> NALH264Manager::takeSlice(std::span<const std::uint8_t> rbsp,
                                                               std::uint8_t nalHeader) {
    try {
        const auto& pps = ppsById_[avcSlicePpsId(rbsp)];
        if (pps == nullptr || !spsById_[pps->spsId]) return std::nullopt;
        const AvcSps& sps = *spsById_[pps->spsId];
        parseAvcSliceHeader(rbsp, nalHeader, sps, *pps);
        currentSps_ = pps->spsId;
        return timesBy(sps);
    } catch (const BitstreamException&) {
        return std::nullopt;
    }
}

std::optional<NALH264Manager::Times> NALH264Manager::pictureTimes() {
    if (!currentSps_) return std::nullopt;
    return timesBy(*spsById_[*currentSps_]);
}

std::optional<NALH264Manager::Times> NALH264Manager::timesBy(const AvcSps& sps) {
    if (!timing_.isKnown()) return std::nullopt;
    if (std::exchange(timing_.bufferingHere, false)) {
        timing_.bufferingCount = timing_.removalCount();
        timing_.bufferingOpened = true;
    }
    const bool timed = sps.hasTiming();
    const std::uint32_t units = timed ? sps.vui.numUnitsInTick : 1;
    const std::uint32_t scale = timed ? sps.vui.timeScale : 60;
    const std::uint64_t outputCount = timing_.removalCount() + timing_.outputDelay;
    if (!anchorValid_) {
        firstOutputCount_ = outputCount;
        anchorValid_ = true;
        anchorLost_ = false;
    }
    Times times;
    times.presentation = ticksOf(outputCount - firstOutputCount_, units, scale) + anchorTime_;
    const std::uint64_t delay = ticksOf(timing_.outputDelay, units, scale);
    times.decode = delay <= times.presentation ? times.presentation - delay : 0;
    return times;
}

void NALH264Manager::resetAnchor(std::uint64_t time) {
    anchorTime_ = time;
    anchorValid_ = false;
}

}  // namespace mvrtpfec
