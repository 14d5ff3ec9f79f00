#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "rtp_media/h264/avc_pps.h"
#include "rtp_media/h264/avc_sps.h"

namespace mvrtpfec {

/// Slice header (ISO/IEC 14496-10, 7.3.3) up to the marking of reference pictures.
struct AvcSliceHeader {
    enum class Type : std::uint8_t { p = 0, b = 1, i = 2, sp = 3, si = 4 };
    struct Operation {
        std::uint32_t code = 0;
        std::uint32_t first = 0;
        std::uint32_t second = 0;
    };
    struct Weight {
        std::int32_t weight = 0;
        std::int32_t offset = 0;
    };
    /// Of one reference: luma, Cb, Cr; only what is present was set.
    struct Weights {
        bool hasLuma = false;
        bool hasChroma = false;
        Weight components[3];
    };

    std::uint32_t firstMb = 0;
    Type type = Type::i;
    std::uint32_t ppsId = 0;
    std::uint8_t colourPlane = 0;
    std::uint32_t frameNum = 0;
    bool fieldPicture = false;
    bool bottomField = false;
    std::uint32_t idrPicId = 0;
    std::uint32_t picOrderCntLsb = 0;
    std::int32_t deltaPicOrderCntBottom = 0;
    std::int32_t deltaPicOrderCnt[2]{};
    std::uint32_t redundantPicCnt = 0;
    bool directSpatial = false;
    std::uint32_t refIdxL0ActiveMinus1 = 0;
    std::uint32_t refIdxL1ActiveMinus1 = 0;
    std::vector<Operation> listModifications[2];
    std::uint32_t lumaLog2WeightDenominator = 0;
    std::uint32_t chromaLog2WeightDenominator = 0;
    std::vector<Weights> weights[2];
    bool noOutputOfPriorPictures = false;
    bool longTermReference = false;
    std::vector<Operation> markings;
};

/// pic_parameter_set_id of a slice, which tells the sets to parse it with. Both take an RBSP from behind the
/// NAL header byte on and throw BitstreamException.
std::uint32_t avcSlicePpsId(std::span<const std::uint8_t> rbsp);
AvcSliceHeader parseAvcSliceHeader(std::span<const std::uint8_t> rbsp, std::uint8_t nalHeader,
                                   const AvcSps& sps, const AvcPps& pps);

}  // namespace mvrtpfec
