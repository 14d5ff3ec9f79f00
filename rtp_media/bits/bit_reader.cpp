#include "rtp_media/bits/bit_reader.h"

namespace mvrtpfec {

void BitReader::require(std::size_t count) const {
    if (count > remaining()) throw BitstreamException("the bit string ends too early");
}

std::uint32_t BitReader::bits(unsigned count) {
    return static_cast<std::uint32_t>(longBits(count));
}

std::uint64_t BitReader::longBits(unsigned count) {
    require(count);
    std::uint64_t value = 0;
    for (unsigned left = count; left > 0;) {
        const unsigned inByte = 8 - static_cast<unsigned>(position_ % 8);
        const unsigned taken = left < inByte ? left : inByte;
        const unsigned byte = bytes_[position_ / 8];
        value = value << taken | (byte >> (inByte - taken) & ((1U << taken) - 1));
        position_ += taken;
        left -= taken;
    }
    return value;
}

void BitReader::skip(std::size_t count) {
    require(count);
    position_ += count;
}

std::uint32_t BitReader::unsignedExpGolomb() {
    const std::size_t start = position_;
    try {
        unsigned zeros = 0;
        while (!flag()) {
            if (++zeros > 32) throw BitstreamException("an Exp-Golomb number is longer than 32 bits");
        }
        const std::uint64_t value = (std::uint64_t{1} << zeros) - 1 + longBits(zeros);
        if (value > 0xFFFFFFFF) throw BitstreamException("an Exp-Golomb number is longer than 32 bits");
        return static_cast<std::uint32_t>(value);
    } catch (...) {
        position_ = start;
        throw;
    }
}

std::int32_t BitReader::signedExpGolomb() {
    const std::uint32_t code = unsignedExpGolomb();
    const std::int64_t magnitude = (std::int64_t{code} + 1) / 2;
    const std::int64_t value = code % 2 != 0 ? magnitude : -magnitude;
    return static_cast<std::int32_t>(value > INT32_MAX ? INT32_MAX : value);
}

std::uint32_t BitReader::unsignedExpGolomb(std::uint32_t most) {
    const std::size_t start = position_;
    const std::uint32_t value = unsignedExpGolomb();
    if (value > most) {
        position_ = start;
        throw BitstreamException("a number is beyond its range");
    }
    return value;
}

}  // namespace mvrtpfec
