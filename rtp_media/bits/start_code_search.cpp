#include "rtp_media/bits/start_code_search.h"

#include <algorithm>

namespace mvrtpfec {

namespace {

/// Bytes looked at in one turn; the compiler makes straight runs of vector instructions of it.
constexpr std::size_t block = 64;

/// Whether a zero pair begins among the 64 bytes from `at` on; 65 are read. The least of the sums is what
/// vector units find quickest.
bool holdsZeroPair(const std::uint8_t* at) {
    std::uint8_t least = 0xFF;
    for (std::size_t i = 0; i < block; ++i)
        least = std::min(least, static_cast<std::uint8_t>(at[i] | at[i + 1]));
    return least == 0;
}

}  // namespace

std::size_t findZeroPair(std::span<const std::uint8_t> bytes) {
    const std::uint8_t* const data = bytes.data();
    std::size_t i = 0;
    while (i + block < bytes.size() && !holdsZeroPair(data + i)) i += block;
    for (; i + 1 < bytes.size(); ++i) {
        if ((data[i] | data[i + 1]) == 0) return i;
    }
    return bytes.size();
}

std::size_t findStartCode(std::span<const std::uint8_t> bytes) {
    std::size_t at = 0;
    while (true) {
        at += findZeroPair(bytes.subspan(at));
        std::size_t one = at + 2;
        while (one < bytes.size() && bytes[one] == 0) ++one;
        if (one >= bytes.size()) return bytes.size();
        if (bytes[one] == 1) return one - 2;
        at = one + 1;
    }
}

}  // namespace mvrtpfec
