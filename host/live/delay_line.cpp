#include "host/live/delay_line.h"

#include <utility>

namespace mvrtpfec {

namespace {

/// About ten seconds of 150 Mbit/s.
constexpr std::size_t mostTravelling = 150'000;

SteadyTime::duration fromMilliseconds(double milliseconds) {
    return std::chrono::duration_cast<SteadyTime::duration>(
        std::chrono::duration<double, std::milli>(milliseconds));
}

}  // namespace

DelayLine::DelayLine(const DelayConfig& config, Output output)
    : config_(config), output_(std::move(output)), random_(config.seed) {}

void DelayLine::push(StreamPort port, std::vector<std::uint8_t> packet, SteadyTime now) {
    if (travelling_.size() == mostTravelling) {
        ++overflowed_;
        return;
    }
    // The same on every machine, which the library's distributions aren't.
    const double share = static_cast<double>(random_() >> 11) * 0x1p-53;
    const SteadyTime due = now + fromMilliseconds(config_.delay + config_.jitter * share);
    travelling_.push({due, pushed_++, port, std::move(packet)});
}

void DelayLine::letOut(SteadyTime now) {
    while (!travelling_.empty() && travelling_.top().due <= now) {
        output_(travelling_.top().port, travelling_.top().packet);
        travelling_.pop();
    }
}

std::optional<SteadyTime> DelayLine::next() const {
    if (travelling_.empty()) return std::nullopt;
    return travelling_.top().due;
}

}  // namespace mvrtpfec
