#include "core/sequence_set.h"

#include <algorithm>
#include <bit>

namespace mvrtpfec {

namespace {

constexpr std::uint64_t allBits = ~std::uint64_t{0};

constexpr std::uint64_t bit(std::uint32_t index) {
    return std::uint64_t{1} << (index % 64);
}

/// Index of the first set bit at or above `from` in an array of words, or the array's size in bits.
template <std::size_t N>
std::uint32_t firstSet(const std::array<std::uint64_t, N>& words, std::uint32_t from) {
    constexpr auto size = static_cast<std::uint32_t>(N * 64);
    if (from >= size) return size;
    std::uint64_t word = words[from / 64] & (allBits << (from % 64));
    for (std::uint32_t w = from / 64;;) {
        if (word != 0) return w * 64 + static_cast<std::uint32_t>(std::countr_zero(word));
        if (++w == N) return size;
        word = words[w];
    }
}

}  // namespace

bool SequenceSet::insert(std::uint16_t number) {
    if (contains(number)) return false;
    words_[number / 64u] |= bit(number);
    summary_[number / 4096u] |= bit(number / 64u);
    ++size_;
    return true;
}

bool SequenceSet::erase(std::uint16_t number) {
    if (!contains(number)) return false;
    std::uint64_t& word = words_[number / 64u];
    word &= ~bit(number);
    if (word == 0) summary_[number / 4096u] &= ~bit(number / 64u);
    --size_;
    return true;
}

void SequenceSet::insertRange(std::uint32_t first, std::uint32_t last) {
    while (first < last) {
        const std::uint32_t wordIndex = first / 64;
        const std::uint32_t stop = std::min(last, (wordIndex + 1) * 64);
        const std::uint64_t mask = (allBits << (first % 64)) & (allBits >> ((64 - stop % 64) % 64));
        std::uint64_t& word = words_[wordIndex];
        size_ += static_cast<std::size_t>(std::popcount(mask & ~word));
        word |= mask;
        summary_[wordIndex / 64] |= bit(wordIndex);
        first = stop;
    }
}

std::size_t SequenceSet::eraseRange(std::uint32_t first, std::uint32_t last) {
    std::size_t erased = 0;
    for (std::uint32_t n = next(first); n < last; n = next(n + 1)) {
        erase(static_cast<std::uint16_t>(n));
        ++erased;
    }
    return erased;
}

std::uint32_t SequenceSet::next(std::uint32_t from) const {
    if (from >= end) return end;
    const std::uint64_t here = words_[from / 64] & (allBits << (from % 64));
    if (here != 0) return from / 64 * 64 + static_cast<std::uint32_t>(std::countr_zero(here));
    const std::uint32_t wordIndex = firstSet(summary_, from / 64 + 1);
    if (wordIndex == words_.size()) return end;
    return wordIndex * 64 + static_cast<std::uint32_t>(std::countr_zero(words_[wordIndex]));
}

}  // namespace mvrtpfec
