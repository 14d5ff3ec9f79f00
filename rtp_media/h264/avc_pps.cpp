#include "rtp_media/h264/avc_pps.h"

#include <bit>

#include "rtp_media/h264/avc_sps.h"
#include "rtp_media/h264/avc_syntax_reader.h"

namespace mvrtpfec {

namespace {

constexpr std::uint32_t mostSliceGroupsMinus1 = 7;
constexpr std::uint32_t mostRefIdxMinus1 = 31;
/// MaxFS of the highest level (table A-1), in macroblocks.
constexpr std::uint32_t mostMapUnits = 139264;

void readNumbers(BitReader& reader, std::size_t count, std::vector<std::uint32_t>& numbers) {
    for (std::size_t i = 0; i < count; ++i) numbers.push_back(reader.unsignedExpGolomb());
}

void readGroupIds(BitReader& reader, AvcPps& pps) {
    const std::uint32_t units = reader.unsignedExpGolomb(mostMapUnits - 1) + 1;
    const auto bits = static_cast<unsigned>(std::bit_width(pps.sliceGroupsMinus1));
    for (std::uint32_t i = 0; i < units; ++i) pps.sliceGroupNumbers.push_back(reader.bits(bits));
}

void readSliceGroups(BitReader& reader, AvcPps& pps) {
    pps.sliceGroupsMinus1 = reader.unsignedExpGolomb(mostSliceGroupsMinus1);
    if (pps.sliceGroupsMinus1 == 0) return;
    pps.sliceGroupMapType = reader.unsignedExpGolomb(6);
    switch (pps.sliceGroupMapType) {
        case 0:
            readNumbers(reader, pps.sliceGroupsMinus1 + 1, pps.sliceGroupNumbers);
            break;
        case 2:
            readNumbers(reader, 2 * pps.sliceGroupsMinus1, pps.sliceGroupNumbers);
            break;
        case 3:
        case 4:
        case 5:
            pps.sliceGroupChangeDirection = reader.flag();
            pps.sliceGroupChangeRateMinus1 = reader.unsignedExpGolomb();
            break;
        case 6:
            readGroupIds(reader, pps);
            break;
        default:
            break;
    }
}

/// Whether anything but the stop bit and zeros follows (7.2).
bool moreRbspData(BitReader reader) {
    if (reader.remaining() == 0) return false;
    reader.skip(1);
    while (reader.remaining() > 0) {
        if (reader.flag()) return true;
    }
    return false;
}

void readExtension(BitReader& reader, AvcPps& pps, std::uint32_t chromaFormat) {
    pps.transform8x8 = reader.flag();
    pps.hasScalingLists = reader.flag();
    if (pps.hasScalingLists) {
        avcSyntaxReader syntax(reader);
        const std::size_t large = !pps.transform8x8 ? 0 : chromaFormat != 3 ? 2 : 6;
        scalingListsSyntax(syntax, pps.scalingLists, AvcScalingLists::smallLists + large);
    }
    pps.secondChromaQpIndexOffset = reader.signedExpGolomb();
}

}  // namespace

AvcPps parseAvcPps(std::span<const std::uint8_t> rbsp, std::span<const std::uint32_t> chromaFormats) {
    BitReader reader(rbsp);
    AvcPps pps;
    pps.id = reader.unsignedExpGolomb(AvcPps::mostId);
    pps.spsId = reader.unsignedExpGolomb(AvcSps::mostId);
    pps.cabac = reader.flag();
    pps.bottomFieldPicOrderPresent = reader.flag();
    readSliceGroups(reader, pps);
    pps.refIdxL0DefaultMinus1 = reader.unsignedExpGolomb(mostRefIdxMinus1);
    pps.refIdxL1DefaultMinus1 = reader.unsignedExpGolomb(mostRefIdxMinus1);
    pps.weightedPrediction = reader.flag();
    pps.weightedBipredIdc = static_cast<std::uint8_t>(reader.bits(2));
    pps.picInitQpMinus26 = reader.signedExpGolomb();
    pps.picInitQsMinus26 = reader.signedExpGolomb();
    pps.chromaQpIndexOffset = reader.signedExpGolomb();
    pps.secondChromaQpIndexOffset = pps.chromaQpIndexOffset;
    pps.deblockingControlPresent = reader.flag();
    pps.constrainedIntraPrediction = reader.flag();
    pps.redundantPicCntPresent = reader.flag();
    if (moreRbspData(reader)) readExtension(reader, pps, chromaFormats[pps.spsId]);
    return pps;
}

}  // namespace mvrtpfec
