#include "rtp_media/bits/bit_set.h"

#include <iostream>

namespace mvrtpfec {

void Bit_Set::append(bool bit) {
    if (size_ % 32 == 0) words_.push_back(0);
    if (bit) words_.back() |= std::uint32_t{1} << size_ % 32;
    ++size_;
}

void Bit_Set::append(std::uint32_t value, unsigned count) {
    while (count-- > 0) append((value >> count & 1) != 0);
}

bool Bit_Set::at(std::size_t index) const {
    if (index >= size_) {
        std::cerr << "out of range" << std::endl;
        return false;
    }
    return (words_[index / 32] >> index % 32 & 1) != 0;
}

std::vector<std::uint8_t> Bit_Set::bytes() const {
    std::vector<std::uint8_t> packed((size_ + 7) / 8);
    for (std::size_t i = 0; i < size_; ++i) {
        if (at(i)) packed[i / 8] = static_cast<std::uint8_t>(packed[i / 8] | 0x80 >> i % 8);
    }
    return packed;
}

}  // namespace mvrtpfec
