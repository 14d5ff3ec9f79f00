#include "rtp_media/h264/avc_slice_header.h"

#include "rtp_media/bits/bit_reader.h"

namespace mvrtpfec {

namespace {

using Type = AvcSliceHeader::Type;
using Operation = AvcSliceHeader::Operation;

constexpr std::uint32_t mostSliceType = 9;
constexpr std::uint32_t mostRefIdxMinus1 = 31;
constexpr std::uint8_t idrSlice = 5;
/// No list has more entries than fields can be referred to (7.4.3.1, 7.4.3.3), each changed once, and an end.
constexpr std::size_t mostOperations = 66;

bool isPredicted(Type type) {
    return type == Type::p || type == Type::sp;
}

void readPicOrder(BitReader& reader, AvcSliceHeader& slice, const AvcSps& sps, const AvcPps& pps) {
    const bool both = pps.bottomFieldPicOrderPresent && !slice.fieldPicture;
    if (sps.picOrderCntType == 0) {
        slice.picOrderCntLsb = reader.bits(sps.log2MaxPicOrderCntLsbMinus4 + 4);
        if (both) slice.deltaPicOrderCntBottom = reader.signedExpGolomb();
    }
    if (sps.picOrderCntType == 1 && !sps.deltaPicOrderAlwaysZero) {
        slice.deltaPicOrderCnt[0] = reader.signedExpGolomb();
        if (both) slice.deltaPicOrderCnt[1] = reader.signedExpGolomb();
    }
}

void readPicture(BitReader& reader, AvcSliceHeader& slice, bool idr, const AvcSps& sps, const AvcPps& pps) {
    if (sps.separateColourPlanes) slice.colourPlane = static_cast<std::uint8_t>(reader.bits(2));
    slice.frameNum = reader.bits(sps.log2MaxFrameNumMinus4 + 4);
    if (!sps.frameMbsOnly) slice.fieldPicture = reader.flag();
    if (slice.fieldPicture) slice.bottomField = reader.flag();
    if (idr) slice.idrPicId = reader.unsignedExpGolomb(65535);
    readPicOrder(reader, slice, sps, pps);
    if (pps.redundantPicCntPresent) slice.redundantPicCnt = reader.unsignedExpGolomb(127);
}

void readActiveReferences(BitReader& reader, AvcSliceHeader& slice, const AvcPps& pps) {
    slice.refIdxL0ActiveMinus1 = pps.refIdxL0DefaultMinus1;
    slice.refIdxL1ActiveMinus1 = pps.refIdxL1DefaultMinus1;
    if (slice.type == Type::b) slice.directSpatial = reader.flag();
    if ((!isPredicted(slice.type) && slice.type != Type::b) || !reader.flag()) return;
    slice.refIdxL0ActiveMinus1 = reader.unsignedExpGolomb(mostRefIdxMinus1);
    if (slice.type == Type::b) slice.refIdxL1ActiveMinus1 = reader.unsignedExpGolomb(mostRefIdxMinus1);
}

/// ref_pic_list_modification (7.3.3.1)
void readListModification(BitReader& reader, std::vector<Operation>& operations) {
    constexpr std::uint32_t end = 3;
    if (!reader.flag()) return;
    while (true) {
        const std::uint32_t code = reader.unsignedExpGolomb(5);
        if (code == end) return;
        if (operations.size() == mostOperations) throw BitstreamException("a list is changed too often");
        operations.push_back({code, reader.unsignedExpGolomb(), 0});
    }
}

void readListModifications(BitReader& reader, AvcSliceHeader& slice) {
    if (slice.type == Type::i || slice.type == Type::si) return;
    readListModification(reader, slice.listModifications[0]);
    if (slice.type == Type::b) readListModification(reader, slice.listModifications[1]);
}

AvcSliceHeader::Weight readWeight(BitReader& reader) {
    AvcSliceHeader::Weight weight;
    weight.weight = reader.signedExpGolomb();
    weight.offset = reader.signedExpGolomb();
    return weight;
}

void readListWeights(BitReader& reader, std::vector<AvcSliceHeader::Weights>& list, std::uint32_t count,
                     bool hasChroma) {
    list.resize(count);
    for (auto& entry : list) {
        entry.hasLuma = reader.flag();
        if (entry.hasLuma) entry.components[0] = readWeight(reader);
        if (!hasChroma) continue;
        entry.hasChroma = reader.flag();
        if (!entry.hasChroma) continue;
        entry.components[1] = readWeight(reader);
        entry.components[2] = readWeight(reader);
    }
}

/// pred_weight_table (7.3.3.2)
void readWeights(BitReader& reader, AvcSliceHeader& slice, const AvcSps& sps, const AvcPps& pps) {
    const bool weighted = (pps.weightedPrediction && isPredicted(slice.type)) ||
                          (pps.weightedBipredIdc == 1 && slice.type == Type::b);
    if (!weighted) return;
    const bool hasChroma = sps.chromaFormatIdc != 0 && !sps.separateColourPlanes;
    slice.lumaLog2WeightDenominator = reader.unsignedExpGolomb(7);
    if (hasChroma) slice.chromaLog2WeightDenominator = reader.unsignedExpGolomb(7);
    readListWeights(reader, slice.weights[0], slice.refIdxL0ActiveMinus1 + 1, hasChroma);
    if (slice.type == Type::b)
        readListWeights(reader, slice.weights[1], slice.refIdxL1ActiveMinus1 + 1, hasChroma);
}

/// dec_ref_pic_marking (7.3.3.3)
void readMarking(BitReader& reader, AvcSliceHeader& slice, bool idr) {
    if (idr) {
        slice.noOutputOfPriorPictures = reader.flag();
        slice.longTermReference = reader.flag();
        return;
    }
    if (!reader.flag()) return;
    while (const std::uint32_t code = reader.unsignedExpGolomb(6)) {
        if (slice.markings.size() == mostOperations)
            throw BitstreamException("pictures are marked too often");
        Operation operation{code, 0, 0};
        if (code != 5) operation.first = reader.unsignedExpGolomb();
        if (code == 3) operation.second = reader.unsignedExpGolomb();
        slice.markings.push_back(operation);
    }
}

}  // namespace

std::uint32_t avcSlicePpsId(std::span<const std::uint8_t> rbsp) {
    BitReader reader(rbsp);
    reader.unsignedExpGolomb();
    reader.unsignedExpGolomb(mostSliceType);
    return reader.unsignedExpGolomb(AvcPps::mostId);
}

AvcSliceHeader parseAvcSliceHeader(std::span<const std::uint8_t> rbsp, std::uint8_t nalHeader,
                                   const AvcSps& sps, const AvcPps& pps) {
    BitReader reader(rbsp);
    AvcSliceHeader slice;
    const bool idr = (nalHeader & 0x1F) == idrSlice;
    const bool isReference = (nalHeader & 0x60) != 0;
    slice.firstMb = reader.unsignedExpGolomb();
    slice.type = static_cast<Type>(reader.unsignedExpGolomb(mostSliceType) % 5);
    slice.ppsId = reader.unsignedExpGolomb(AvcPps::mostId);
    readPicture(reader, slice, idr, sps, pps);
    readActiveReferences(reader, slice, pps);
    readListModifications(reader, slice);
    readWeights(reader, slice, sps, pps);
    if (isReference) readMarking(reader, slice, idr);
    return slice;
}

}  // namespace mvrtpfec
