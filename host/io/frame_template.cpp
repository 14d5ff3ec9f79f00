#include "host/io/frame_template.h"

#include <array>
#include <stdexcept>

#include "core/big_endian.h"
#include "host/io/internet_checksum.h"

namespace mvrtpfec {

namespace {

constexpr std::size_t maxIpLength = 65535;

// The group's MAC address after RFC 1112 section 6.4, the sender's from those for documentation
// (RFC 7042 section 2.1.2). The UDP checksum only has to be there.
constexpr std::array<std::uint8_t, 42> documentationHeaders = {
    0x01, 0x00, 0x5e, 0x7c, 0x00, 0x01, 0x00, 0x00, 0x5e, 0x00, 0x53, 0x01, 0x08, 0x00,  // Ethernet
    0x45, 0x00, 0x00, 0x1c, 0x00, 0x00, 0x40, 0x00, 0x10, 0x11, 0x00, 0x00,              // IPv4, TTL 16
    192,  0,    2,    1,    233,  252,  0,    1,                                         //
    0x13, 0x8c, 0x13, 0x8c, 0x00, 0x08, 0xff, 0xff,                                      // UDP, port 5004
};

}  // namespace

FrameTemplate::FrameTemplate(LinkType linkType) : linkType_(linkType) {
    if (linkType != LinkType::ethernet) return;
    take(documentationHeaders, *locateUdp(linkType, documentationHeaders));
    hasTaken_ = false;
}

void FrameTemplate::take(std::span<const std::uint8_t> frame, const FrameLayers& layers) {
    const auto headers = frame.first(layers.payload);
    headers_.assign(headers.begin(), headers.end());
    layers_ = layers;
    hasTaken_ = true;
}

void FrameTemplate::build(std::span<const std::uint8_t> payload, std::uint16_t destinationPort,
                          std::vector<std::uint8_t>& frame) const {
    if (headers_.empty()) throw std::logic_error("no frame has been read to take the addressing from");
    if (layers_.payload - layers_.network + payload.size() > maxIpLength)
        throw std::length_error("the payload is too long for an IP packet");
    frame.assign(headers_.begin(), headers_.end());
    frame.insert(frame.end(), payload.begin(), payload.end());

    std::uint8_t* udp = &frame[layers_.transport];
    writeBigEndian16(udp + 2, destinationPort);
    writeBigEndian16(udp + 4, static_cast<std::uint16_t>(frame.size() - layers_.transport));
    setIpLength(frame);
    setUdpChecksum(frame);
}

void FrameTemplate::setIpLength(std::vector<std::uint8_t>& frame) const {
    std::uint8_t* ip = &frame[layers_.network];
    const std::size_t length = frame.size() - layers_.network;
    if (layers_.isIpv6) {
        writeBigEndian16(ip + 4, static_cast<std::uint16_t>(length - ipv6HeaderSize));
        return;
    }
    writeBigEndian16(ip + 2, static_cast<std::uint16_t>(length));
    writeBigEndian16(ip + 10, 0);
    InternetChecksum checksum;
    checksum.add({ip, layers_.transport - layers_.network});
    writeBigEndian16(ip + 10, checksum.value());
}

// RFC 768 and RFC 8200 section 8.1: over a pseudo-header of addresses, protocol and length, and the
// datagram; a result of zero is sent as all ones, because zero stands for no checksum.
void FrameTemplate::setUdpChecksum(std::vector<std::uint8_t>& frame) const {
    std::uint8_t* field = &frame[layers_.transport + 6];
    if (!layers_.isIpv6 && readBigEndian16(field) == 0) return;
    writeBigEndian16(field, 0);
    const std::span<const std::uint8_t> bytes(frame);
    const std::size_t udpLength = frame.size() - layers_.transport;
    InternetChecksum checksum;
    checksum.add(layers_.isIpv6 ? bytes.subspan(layers_.network + 8, 32)
                                : bytes.subspan(layers_.network + 12, 8));
    checksum.add(std::uint16_t{17});
    checksum.add(static_cast<std::uint16_t>(udpLength));
    checksum.add(bytes.subspan(layers_.transport));
    writeBigEndian16(field, checksum.value() == 0 ? std::uint16_t{0xffff} : checksum.value());
}

}  // namespace mvrtpfec
