#include "rtp_media/audio/ac3_frame_size.h"

#include <array>

namespace mvrtpfec {

namespace {

/// ATSC A/52, table 5.18: two codes a bit rate; at 44.1 kHz the odd one is a word longer.
std::size_t wordsAt(std::uint32_t fscod, std::uint32_t frmsizecod) {
    constexpr std::array<std::uint32_t, 19> kilobits{32,  40,  48,  56,  64,  80,  96,  112, 128, 160,
                                                     192, 224, 256, 320, 384, 448, 512, 576, 640};
    if (frmsizecod >= 2 * kilobits.size()) return 0;
    const std::uint32_t rate = kilobits[frmsizecod / 2];
    switch (fscod) {
        case 0:  // 48 kHz
            return std::size_t{rate} * 2;
        case 1:  // 44.1 kHz
            return std::size_t{rate} * 320 / 147 + frmsizecod % 2;
        case 2:  // 32 kHz
            return std::size_t{rate} * 3;
        default:
            return 0;
    }
}

/// ATSC A/52, E.2.2: strmtyp, frmsiz, fscod and, behind fscod 3, fscod2.
std::size_t wordsInHeader(std::span<const std::uint8_t, ac3SizeEnd> bytes) {
    const bool streamTypeReserved = bytes[2] >> 6 == 3;
    const bool rateReserved = bytes[4] >> 4 == 0xF;
    if (streamTypeReserved || rateReserved) return 0;
    return ((bytes[2] & 7U) << 8 | bytes[3]) + 1;
}

}  // namespace

std::size_t ac3FrameSize(std::span<const std::uint8_t, ac3SizeEnd> bytes) {
    const std::uint32_t bsid = bytes[5] >> 3;
    if (bsid > 16) return 0;
    const std::size_t size = 2 * (bsid > 10 ? wordsInHeader(bytes) : wordsAt(bytes[4] >> 6, bytes[4] & 0x3F));
    return size >= ac3SizeEnd ? size : 0;
}

}  // namespace mvrtpfec
