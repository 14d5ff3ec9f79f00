#include "rtp_media/audio/copy_bits.h"

namespace mvrtpfec {

void copyBits(std::span<const std::uint8_t> bytes, std::size_t first, std::size_t last,
              std::vector<std::uint8_t>& out) {
    out.resize((last - first + 7) / 8);
    const auto shift = static_cast<unsigned>(first % 8);
    const std::size_t start = first / 8;
    for (std::size_t i = 0; i < out.size(); ++i) {
        const unsigned high = bytes[start + i];
        const unsigned low = start + i + 1 < bytes.size() ? bytes[start + i + 1] : 0;
        out[i] = static_cast<std::uint8_t>((high << 8 | low) >> (8 - shift));
    }
    const auto filled = static_cast<unsigned>((8 - (last - first) % 8) % 8);
    if (!out.empty()) out.back() = static_cast<std::uint8_t>(out.back() >> filled << filled);
}

}  // namespace mvrtpfec
