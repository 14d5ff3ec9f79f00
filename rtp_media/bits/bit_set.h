#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace mvrtpfec {

/// A bit string that grows: bit i lives in word i / 32 at position i mod 32.
class Bit_Set {
public:
    void append(bool bit);
    /// The lowest `count` bits of `value`, 0 to 32, most significant first.
    void append(std::uint32_t value, unsigned count);

    std::size_t size() const noexcept { return size_; }
    /// A bit beyond the end reads 0 and is reported as "out of range" on the error console.
    bool at(std::size_t index) const;

    /// The bits in order, eight to a byte, the first the most significant; the last byte filled with zeros.
    std::vector<std::uint8_t> bytes() const;

private:
    std::vector<std::uint32_t> words_;
    std::size_t size_ = 0;
};

}  // namespace mvrtpfec
