#include "framework/sync/synchronizer.h"

#include <numeric>

#include "framework/base/critical_section.h"

namespace mvrtpfec {

namespace {

constexpr std::uint64_t unitsPerSecond = 10'000'000;

}  // namespace

CSynchronizer::CSynchronizer(std::uint64_t rate, std::uint64_t modulus)
    : rate_(rate), modulus_(modulus), modulusTime_(toReferenceTime(modulus)) {}

bool CSynchronizer::IsSynchronized() {
    const CAutoLock lock(&lock_);
    return valid_;
}

void CSynchronizer::SetReference(std::uint64_t clock, std::int64_t referenceTime) {
    const CAutoLock lock(&lock_);
    valid_ = true;
    referenceTime_ = referenceTime;
    referenceClock_ = clock;
}

void CSynchronizer::ResetReference() {
    const CAutoLock lock(&lock_);
    valid_ = false;
}

std::int64_t CSynchronizer::ClockToReferenceTime(std::uint64_t clock) {
    const CAutoLock lock(&lock_);
    const std::uint64_t before = forwardDistance(clock, referenceClock_);
    const std::uint64_t after = forwardDistance(referenceClock_, clock);
    // Unsigned, so that times at the edge wrap.
    const auto reference = static_cast<std::uint64_t>(referenceTime_);
    const std::uint64_t time =
        before < after ? reference - toReferenceTime(before) : reference + toReferenceTime(after);
    const bool negative = static_cast<std::int64_t>(time) < 0;
    return static_cast<std::int64_t>(negative ? time + modulusTime_ : time);
}

/// Rounded to the nearest, halves up. Whole seconds' worth of ticks go apart from the rest, so that nothing
/// overflows that doesn't have to.
std::uint64_t CSynchronizer::toReferenceTime(std::uint64_t ticks) const noexcept {
    const std::uint64_t common = std::gcd(unitsPerSecond, rate_);
    const std::uint64_t units = unitsPerSecond / common;
    const std::uint64_t ticksOfThem = rate_ / common;
    return ticks / ticksOfThem * units + (ticks % ticksOfThem * units + ticksOfThem / 2) / ticksOfThem;
}

std::uint64_t CSynchronizer::forwardDistance(std::uint64_t from, std::uint64_t to) const noexcept {
    return to >= from ? to - from : modulus_ - from + to;
}

}  // namespace mvrtpfec
