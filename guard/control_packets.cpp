#include "guard/control_packets.h"

#include <algorithm>
#include <array>

namespace mvrtpfec {

namespace {

constexpr std::uint8_t refusedPayloadType = 0;
/// Combined with any number of media packets it gives 1 or 32, neither of which is valid.
constexpr std::uint8_t barrenPayloadType = 1;

std::unique_ptr<RtpPacket> makeBarrenFec(FecKind kind, std::uint16_t base, std::uint8_t offset,
                                         std::uint8_t count) {
    std::array<std::uint8_t, fecPayloadOffset> bytes{};
    bytes[0] = versionTwo | paddingBit;
    bytes[1] = fecPayloadType;
    writeBigEndian16(&bytes[fec_header::snBase], base);
    bytes[fec_header::payloadTypeRecovery] = fec_header::extensionFlag | barrenPayloadType;
    bytes[fec_header::direction] = kind == FecKind::row ? fec_header::rowFlag : 0;
    bytes[fec_header::offset] = offset;
    bytes[fec_header::protectedCount] = count;
    return std::make_unique<RtpPacket>(bytes.data(), bytes.size());
}

}  // namespace

void MatrixSize::learn(FecKind kind, const ProtectedRange& range) {
    if (kind == FecKind::column) {
        columns = range.offset;
        rows = range.count;
    } else {
        columns = range.count;
    }
}

std::unique_ptr<RtpPacket> makeSpacer(std::uint16_t sequenceNumber, const MatrixSize& matrix,
                                      std::uint16_t handedOn) {
    auto packet = makeBarrenFec(FecKind::row, handedOn, 0, std::max<std::uint8_t>(matrix.columns, 1));
    writeBigEndian16(packet->view.data + 2, sequenceNumber);
    return packet;
}

std::unique_ptr<RtpPacket> makeRenewal(std::uint16_t sequenceNumber) {
    std::array<std::uint8_t, rtpHeaderSize> bytes{versionTwo, refusedPayloadType};
    writeBigEndian16(&bytes[2], sequenceNumber);
    return std::make_unique<RtpPacket>(bytes.data(), bytes.size());
}

std::unique_ptr<RtpPacket> makeTeacher(FecKind kind, const MatrixSize& matrix, std::uint16_t base) {
    return kind == FecKind::row ? makeBarrenFec(kind, base, 1, matrix.columns)
                                : makeBarrenFec(kind, base, matrix.columns, matrix.rows);
}

}  // namespace mvrtpfec
