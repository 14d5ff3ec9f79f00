#include "rtp_media/h264/avc_sps.h"

#include <algorithm>
#include <array>
#include <type_traits>

#include "rtp_media/h264/avc_syntax_reader.h"
#include "rtp_media/h264/avc_syntax_writer.h"

namespace mvrtpfec {

namespace {

bool hasChromaFields(std::uint8_t profileIdc) {
    constexpr std::array<std::uint8_t, 13> profiles{100, 110, 122, 244, 44,  83, 86,
                                                    118, 128, 138, 139, 134, 135};
    return std::ranges::find(profiles, profileIdc) != profiles.end();
}

template <class Syntax, class Sps>
void chromaSyntax(Syntax& syntax, Sps& sps) {
    syntax.ue(sps.chromaFormatIdc, 3);
    if (sps.chromaFormatIdc == 3) syntax.u(1, sps.separateColourPlanes);
    syntax.ue(sps.bitDepthLumaMinus8, 6);
    syntax.ue(sps.bitDepthChromaMinus8, 6);
    syntax.u(1, sps.transformBypass);
    syntax.u(1, sps.hasScalingLists);
    if (sps.hasScalingLists)
        scalingListsSyntax(syntax, sps.scalingLists,
                           sps.chromaFormatIdc != 3 ? 8 : AvcScalingLists::mostLists);
}

template <class Syntax, class Sps>
void picOrderSyntax(Syntax& syntax, Sps& sps) {
    syntax.ue(sps.picOrderCntType, 2);
    if (sps.picOrderCntType == 0) syntax.ue(sps.log2MaxPicOrderCntLsbMinus4, 12);
    if (sps.picOrderCntType != 1) return;
    syntax.u(1, sps.deltaPicOrderAlwaysZero);
    syntax.se(sps.offsetForNonRefPic);
    syntax.se(sps.offsetForTopToBottomField);
    syntax.ue(sps.refFramesInCycle, 255);
    if constexpr (!std::is_const_v<Sps>) sps.offsetsForRefFrame.resize(sps.refFramesInCycle);
    for (auto& offset : sps.offsetsForRefFrame) syntax.se(offset);
}

template <class Syntax, class Sps>
void frameSyntax(Syntax& syntax, Sps& sps) {
    syntax.ue(sps.maxNumRefFrames, 16);
    syntax.u(1, sps.gapsInFrameNumAllowed);
    syntax.ue(sps.picWidthInMbsMinus1);
    syntax.ue(sps.picHeightInMapUnitsMinus1);
    syntax.u(1, sps.frameMbsOnly);
    if (!sps.frameMbsOnly) syntax.u(1, sps.mbAdaptiveFrameField);
    syntax.u(1, sps.direct8x8Inference);
    syntax.u(1, sps.hasCropping);
    if (sps.hasCropping) {
        syntax.ue(sps.cropLeft);
        syntax.ue(sps.cropRight);
        syntax.ue(sps.cropTop);
        syntax.ue(sps.cropBottom);
    }
}

template <class Syntax, class Sps>
void spsSyntax(Syntax& syntax, Sps& sps) {
    syntax.u(8, sps.profileIdc);
    syntax.u(8, sps.constraintFlags);
    syntax.u(8, sps.levelIdc);
    syntax.ue(sps.id, AvcSps::mostId);
    if (hasChromaFields(sps.profileIdc)) chromaSyntax(syntax, sps);
    syntax.ue(sps.log2MaxFrameNumMinus4, 12);
    picOrderSyntax(syntax, sps);
    frameSyntax(syntax, sps);
    syntax.u(1, sps.hasVui);
    if (sps.hasVui) vuiSyntax(syntax, sps.vui);
}

/// Table A-1: most bits per second and factor, by level_idc.
struct LevelRate {
    std::uint8_t levelIdc;
    std::uint32_t maxBr;
};
constexpr std::array<LevelRate, 20> levelRates{
    {{10, 64},     {9, 128},     {11, 192},    {12, 384},    {13, 768},    {20, 2000},  {21, 4000},
     {22, 4000},   {30, 10000},  {31, 14000},  {32, 20000},  {40, 20000},  {41, 50000}, {42, 50000},
     {50, 135000}, {51, 240000}, {52, 240000}, {60, 240000}, {61, 480000}, {62, 800000}}};

/// Level 1b is 9 in the newer profiles, and 11 with a flag in the older ones.
std::uint8_t levelOf(const AvcSps& sps) {
    const bool older = sps.profileIdc == 66 || sps.profileIdc == 77 || sps.profileIdc == 88;
    return older && sps.levelIdc == 11 && (sps.constraintFlags & 0x10) != 0 ? 9 : sps.levelIdc;
}

/// cpbBrNalFactor (table A-2; the multiview profiles 118 and 128 have that of High, H.10.2.1).
std::uint32_t nalFactor(std::uint8_t profileIdc) {
    switch (profileIdc) {
        case 100:
        case 118:
        case 128:
            return 1500;
        case 110:
            return 3600;
        case 122:
        case 244:
        case 44:
            return 4800;
        default:
            return 1200;
    }
}

std::uint64_t levelBitRate(const AvcSps& sps) {
    const auto level = std::ranges::find(levelRates, levelOf(sps), &LevelRate::levelIdc);
    return level == levelRates.end() ? 0 : std::uint64_t{level->maxBr} * nalFactor(sps.profileIdc);
}

}  // namespace

AvcSps parseAvcSps(std::span<const std::uint8_t> rbsp) {
    BitReader reader(rbsp);
    avcSyntaxReader syntax(reader);
    AvcSps sps;
    spsSyntax(syntax, sps);
    return sps;
}

std::vector<std::uint8_t> writeAvcSps(const AvcSps& sps) {
    avcSyntaxWriter writer;
    spsSyntax(writer, sps);
    return writer.finish();
}

std::uint32_t avcBitRate(const AvcSps& sps) {
    const AvcHrd* const hrd = sps.hrd();
    const std::uint64_t rate = hrd != nullptr ? hrd->bitRate() : levelBitRate(sps);
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(rate, 0xFFFFFFFF));
}

}  // namespace mvrtpfec
