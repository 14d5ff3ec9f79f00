#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace mvrtpfec {

/// An ordered set of 16-bit sequence numbers: one bit a number, and one bit a word of them, so that
/// membership costs a load and the next member is found in a few steps however far it is.
class SequenceSet {
public:
    static constexpr std::uint32_t end = 65536;

    bool contains(std::uint16_t number) const { return (words_[number / 64u] >> (number % 64u) & 1u) != 0; }
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

    /// False when the number was there already.
    bool insert(std::uint16_t number);
    /// False when the number was not there.
    bool erase(std::uint16_t number);

    /// Inserts the numbers from `first` up to and without `last`, both at most 65536.
    void insertRange(std::uint32_t first, std::uint32_t last);
    /// Erases the numbers from `first` up to and without `last`; returns how many there were.
    std::size_t eraseRange(std::uint32_t first, std::uint32_t last);

    /// The smallest member at or above `from` (at most 65536); `end` when there is none.
    std::uint32_t next(std::uint32_t from) const;

private:
    std::array<std::uint64_t, end / 64> words_{};
    std::array<std::uint64_t, end / 64 / 64> summary_{};  ///< which words hold a member
    std::size_t size_ = 0;
};

}  // namespace mvrtpfec
