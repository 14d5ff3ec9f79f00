#pragma once

#include <cstdint>
#include <span>

namespace mvrtpfec {

/// The one's complement sum of 16-bit words that IPv4 and UDP carry (RFC 1071).
class InternetChecksum {
public:
    /// Adds bytes as big-endian words; only the last part added may have an odd count.
    void add(std::span<const std::uint8_t> bytes);
    void add(std::uint16_t word) { sum_ += word; }

    /// The complement of the sum: what the checksum field is set to.
    std::uint16_t value() const;

private:
    std::uint64_t sum_ = 0;
};

}  // namespace mvrtpfec
