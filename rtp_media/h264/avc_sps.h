#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "rtp_media/h264/avc_scaling_lists.h"
#include "rtp_media/h264/avc_vui.h"

namespace mvrtpfec {

/// Sequence parameter set (ISO/IEC 14496-10, 7.3.2.1.1).
struct AvcSps {
    static constexpr std::uint32_t mostId = 31;

    std::uint8_t profileIdc = 0;
    std::uint8_t constraintFlags = 0;  ///< with the reserved bits
    std::uint8_t levelIdc = 0;
    std::uint32_t id = 0;
    std::uint32_t chromaFormatIdc = 1;
    bool separateColourPlanes = false;
    std::uint32_t bitDepthLumaMinus8 = 0;
    std::uint32_t bitDepthChromaMinus8 = 0;
    bool transformBypass = false;
    bool hasScalingLists = false;
    AvcScalingLists scalingLists;
    std::uint32_t log2MaxFrameNumMinus4 = 0;
    std::uint32_t picOrderCntType = 0;
    std::uint32_t log2MaxPicOrderCntLsbMinus4 = 0;
    bool deltaPicOrderAlwaysZero = false;
    std::int32_t offsetForNonRefPic = 0;
    std::int32_t offsetForTopToBottomField = 0;
    std::uint32_t refFramesInCycle = 0;
    std::vector<std::int32_t> offsetsForRefFrame;
    std::uint32_t maxNumRefFrames = 0;
    bool gapsInFrameNumAllowed = false;
    std::uint32_t picWidthInMbsMinus1 = 0;
    std::uint32_t picHeightInMapUnitsMinus1 = 0;
    bool frameMbsOnly = false;
    bool mbAdaptiveFrameField = false;
    bool direct8x8Inference = false;
    bool hasCropping = false;
    std::uint32_t cropLeft = 0;
    std::uint32_t cropRight = 0;
    std::uint32_t cropTop = 0;
    std::uint32_t cropBottom = 0;
    bool hasVui = false;
    AvcVui vui;

    /// Whether it tells a frame rate.
    bool hasTiming() const {
        return hasVui && vui.hasTiming && vui.numUnitsInTick != 0 && vui.timeScale != 0;
    }
    const AvcHrd* hrd() const { return hasVui ? vui.hrd() : nullptr; }
};

/// Parses the RBSP of a sequence parameter set, NAL header byte excluded. Throws BitstreamException.
AvcSps parseAvcSps(std::span<const std::uint8_t> rbsp);

/// The RBSP of the parameter set, NAL header byte excluded.
std::vector<std::uint8_t> writeAvcSps(const AvcSps& sps);

/// What the HRD says of the bit rate, NAL before VCL, or else the most that profile and level allow (A.3.1,
/// A.3.3); bits per second, 0 when the level isn't known.
std::uint32_t avcBitRate(const AvcSps& sps);

}  // namespace mvrtpfec
