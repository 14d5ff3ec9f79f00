#include "rtp_media/video/nal_builder_mpeg2.h"

#include "rtp_media/video/nal_mpeg2.h"

namespace mvrtpfec {

namespace {

// ISO/IEC 13818-2, table 6-1.
constexpr std::uint8_t pictureStart = 0x00;
constexpr std::uint8_t sequenceHeader = 0xB3;
constexpr std::uint8_t groupStart = 0xB8;

}  // namespace

NALBuilderMPEG2::NALBuilderMPEG2() : NALBuilderStartPatterns(NALMPEG2::startPatterns) {}

bool NALBuilderMPEG2::beginsUnit(std::uint8_t code, bool unitOpen) {
    if (code != pictureStart && code != sequenceHeader && code != groupStart) return false;
    const bool begins = pictureSeen_ || !unitOpen;
    pictureSeen_ = code == pictureStart;
    return begins;
}

std::unique_ptr<NAL> NALBuilderMPEG2::takeUnit(UnitCutter& cutter, std::size_t size) const {
    return cutter.take<NALMPEG2>(size);
}

}  // namespace mvrtpfec
