#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "support/errors.h"

namespace mvrtpfec {

class BitReader;
/// Input that ends too early or holds a number beyond its range; the unit is no good.
using BitstreamException = mvn::ExceptionTemplate<BitReader>;

/// Reads a bit string, most significant bit first, and never beyond its end: a read that would throws
/// BitstreamException and leaves the position where it was.
class BitReader {
public:
    explicit BitReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    /// Unsigned number of `count` bits, 0 to 32.
    std::uint32_t bits(unsigned count);
    /// Unsigned number of `count` bits, 0 to 64.
    std::uint64_t longBits(unsigned count);
    bool flag() { return bits(1) != 0; }
    void skip(std::size_t count);

    /// Exp-Golomb numbers (ISO/IEC 14496-10, 9.1). Up to 32 leading zeros; a value beyond 32 bits throws.
    std::uint32_t unsignedExpGolomb();
    std::int32_t signedExpGolomb();
    /// The same, where the syntax allows no more than `most`; throws for more.
    std::uint32_t unsignedExpGolomb(std::uint32_t most);

    std::size_t position() const noexcept { return position_; }
    std::size_t remaining() const noexcept { return bytes_.size() * 8 - position_; }
    bool byteAligned() const noexcept { return position_ % 8 == 0; }
    void alignToByte() { skip((8 - position_ % 8) % 8); }

private:
    void require(std::size_t count) const;

    std::span<const std::uint8_t> bytes_;
    std::size_t position_ = 0;
};

}  // namespace mvrtpfec
