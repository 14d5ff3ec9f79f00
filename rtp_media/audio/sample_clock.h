#pragma once

#include <cstdint>

namespace mvrtpfec {

/// Time of audio, counted on by its samples; what is rounded doesn't add up.
class SampleClock {
public:
    /// 100 ns.
    std::int64_t now() const noexcept {
        constexpr std::uint64_t second = 10'000'000;
        const std::uint64_t since =
            samples_ / rate_ * second + (samples_ % rate_ * second + rate_ / 2) / rate_;
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(start_) + since);
    }
    void setTo(std::int64_t time) noexcept {
        start_ = time;
        samples_ = 0;
    }
    /// By samples at a rate, Hz, not 0.
    void advance(std::uint32_t samples, std::uint32_t rate) noexcept {
        if (rate != rate_) setTo(now());
        rate_ = rate;
        samples_ += samples;
    }

private:
    std::int64_t start_ = 0;  ///< 100 ns
    std::uint32_t rate_ = 1;
    std::uint64_t samples_ = 0;  ///< since then
};

}  // namespace mvrtpfec
