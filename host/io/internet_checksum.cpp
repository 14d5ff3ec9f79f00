#include "host/io/internet_checksum.h"

#include <cstddef>

#include "core/big_endian.h"

namespace mvrtpfec {

void InternetChecksum::add(std::span<const std::uint8_t> bytes) {
    std::size_t i = 0;
    for (; i + 1 < bytes.size(); i += 2) sum_ += readBigEndian16(&bytes[i]);
    if (i < bytes.size()) sum_ += std::uint64_t{bytes[i]} << 8;
}

std::uint16_t InternetChecksum::value() const {
    std::uint64_t folded = sum_;
    while (folded >> 16 != 0) folded = (folded & 0xffff) + (folded >> 16);
    return static_cast<std::uint16_t>(~folded);
}

}  // namespace mvrtpfec
