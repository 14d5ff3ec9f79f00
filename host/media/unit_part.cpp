#include "host/media/unit_part.h"

namespace mvrtpfec {

namespace {

using Bytes = std::span<const std::uint8_t>;

UnitPart hevcPartOf(unsigned header, Bytes body) {
    constexpr unsigned firstNonVcl = 32;
    if ((header >> 1 & 0x3FU) >= firstNonVcl || body.size() < 2) return UnitPart::other;
    return (body[1] & 0x80U) != 0 ? UnitPart::picture : UnitPart::continuation;
}

UnitPart h264PartOf(unsigned header, Bytes body) {
    switch (header & 0x1FU) {
        case 1:
        case 2:
        case 5:
            return (body[0] & 0x80U) != 0 ? UnitPart::picture : UnitPart::continuation;
        case 3:
        case 4:
            return UnitPart::continuation;
        default:
            return UnitPart::other;
    }
}

}  // namespace

std::span<const std::uint8_t> bodyOf(NAL& unit) {
    const auto& header = unit.header();
    if (!header) return {};
    return unit.bytes().subspan(static_cast<std::size_t>(header->startCodeLength) + 1);
}

UnitPart partOf(NAL& unit) {
    const Bytes body = bodyOf(unit);
    if (body.empty()) return UnitPart::other;
    const unsigned header = unit.header()->value;
    return unit.streamType() == StreamType::hevc ? hevcPartOf(header, body) : h264PartOf(header, body);
}

}  // namespace mvrtpfec
