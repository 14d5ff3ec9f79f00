#pragma once

#include <cstdint>
#include <random>

namespace mvrtpfec {

/// Numbers that are the same on every platform, which those of the standard distributions are not.
class Random {
public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}

    std::uint64_t bits() { return engine_(); }
    /// In [0, 1).
    double unit() { return static_cast<double>(engine_() >> 11) * 0x1.0p-53; }
    bool chance(double probability) { return unit() < probability; }
    /// In [0, end), `end` below 2^32.
    std::uint32_t below(std::uint32_t end) {
        return static_cast<std::uint32_t>((engine_() >> 32) * end >> 32);
    }

private:
    std::mt19937_64 engine_;
};

}  // namespace mvrtpfec
