#include "tests/model/packet.h"

namespace mvrtpfec::model {

Packet::Packet(const Bytes& bytes)
    : buffer(bytes), length(static_cast<std::uint16_t>(bytes.size() % 65536)) {}

std::uint16_t Packet::read16(std::size_t at) const {
    return static_cast<std::uint16_t>(buffer.at(at) * 256 + buffer.at(at + 1));
}

void Packet::write16(std::size_t at, std::uint16_t value) {
    buffer.at(at) = static_cast<std::uint8_t>(value / 256);
    buffer.at(at + 1) = static_cast<std::uint8_t>(value % 256);
}

bool Packet::isTruncated() const {
    if (length < 12) return true;
    return payloadType() == 96 && length < 28;
}

bool Packet::isValid() const {
    if (length < 12) return false;
    const bool versionTwoAndNothingElse = buffer.at(0) == 0x80;
    if (payloadType() == 33) return length >= 12 && length <= 1400 && versionTwoAndNothingElse;
    if (payloadType() == 96) return length >= 28 && length <= 1416 && versionTwoAndNothingElse;
    return false;
}

Bytes Packet::wireBytes() const {
    return Bytes(buffer.begin(), buffer.begin() + length);
}

}  // namespace mvrtpfec::model
