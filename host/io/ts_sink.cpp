#include "host/io/ts_sink.h"

#include "core/rtp_packet.h"
#include "host/io/file_error.h"

namespace mvrtpfec {

namespace {

/// What stands between the RTP header, with its CSRC list and extension, and the padding (RFC 3550
/// sections 5.1 and 5.3.1); nothing when they don't fit the packet.
std::span<const std::uint8_t> mediaPayload(std::span<const std::uint8_t> packet) {
    constexpr std::uint8_t extensionBit = 0x10;
    constexpr std::uint8_t csrcCountBits = 0x0f;
    if (packet.size() < rtpHeaderSize) return {};
    std::size_t begin = rtpHeaderSize + std::size_t{4} * (packet[0] & csrcCountBits);
    if ((packet[0] & extensionBit) != 0) {
        if (begin + 4 > packet.size()) return {};
        begin += 4 + std::size_t{4} * readBigEndian16(&packet[begin + 2]);
    }
    const std::size_t padding = (packet[0] & paddingBit) != 0 ? packet.back() : 0;
    if (begin + padding > packet.size()) return {};
    return packet.subspan(begin, packet.size() - padding - begin);
}

}  // namespace

void TsSink::write(const Datagram& datagram) {
    if (datagram.port != StreamPort::media)
        throw FileError(path_, "a transport stream cannot hold FEC packets; write a .pcap or .pcapng");
    file_.write(mediaPayload(datagram.payload));
}

}  // namespace mvrtpfec
