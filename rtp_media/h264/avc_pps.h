#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "rtp_media/h264/avc_scaling_lists.h"

namespace mvrtpfec {

/// Picture parameter set (ISO/IEC 14496-10, 7.3.2.2).
struct AvcPps {
    static constexpr std::uint32_t mostId = 255;

    std::uint32_t id = 0;
    std::uint32_t spsId = 0;
    bool cabac = false;
    bool bottomFieldPicOrderPresent = false;
    std::uint32_t sliceGroupsMinus1 = 0;
    std::uint32_t sliceGroupMapType = 0;
    std::vector<std::uint32_t> sliceGroupNumbers;  ///< of the map type: run lengths, corners or group ids
    bool sliceGroupChangeDirection = false;
    std::uint32_t sliceGroupChangeRateMinus1 = 0;
    std::uint32_t refIdxL0DefaultMinus1 = 0;
    std::uint32_t refIdxL1DefaultMinus1 = 0;
    bool weightedPrediction = false;
    std::uint8_t weightedBipredIdc = 0;
    std::int32_t picInitQpMinus26 = 0;
    std::int32_t picInitQsMinus26 = 0;
    std::int32_t chromaQpIndexOffset = 0;
    bool deblockingControlPresent = false;
    bool constrainedIntraPrediction = false;
    bool redundantPicCntPresent = false;
    bool transform8x8 = false;
    bool hasScalingLists = false;
    AvcScalingLists scalingLists;
    std::int32_t secondChromaQpIndexOffset = 0;
};

/// Parses the RBSP of a picture parameter set, NAL header byte excluded. `chromaFormats` gives
/// chroma_format_idc by the id of the sequence parameter set. Throws BitstreamException.
AvcPps parseAvcPps(std::span<const std::uint8_t> rbsp, std::span<const std::uint32_t> chromaFormats);

}  // namespace mvrtpfec
