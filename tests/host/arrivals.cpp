#include "tests/host/arrivals.h"

#include "core/big_endian.h"
#include "engine/fec_sender.h"

namespace mvrtpfec {

std::vector<std::uint8_t> mediaPacket(std::uint16_t number, std::uint8_t source, std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    for (std::size_t i = rtpHeaderSize; i < size; ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 7 + number * 13u + source);
    bytes[0] = versionTwo;
    bytes[1] = mediaPayloadType;
    writeBigEndian16(&bytes[2], number);
    writeBigEndian32(&bytes[4], number * 100u);
    bytes[11] = source;
    return bytes;
}

Arrivals protectedStream(std::uint16_t first, std::size_t count, const MatrixConfig& matrix,
                         std::uint8_t source) {
    Arrivals sent;
    FecSender sender(
        [&](FecStream stream, const std::shared_ptr<RtpPacket>& fec) {
            sent.push_back({stream == FecStream::a ? StreamPort::fecA : StreamPort::fecB,
                            {fec->view.data, fec->view.data + fec->view.length}});
        },
        matrix.mode, matrix.columns, matrix.rows);
    for (std::size_t i = 0; i < count; ++i) {
        const auto media = mediaPacket(static_cast<std::uint16_t>(first + i), source, 100 + i * 37 % 1200);
        sent.push_back({StreamPort::media, media});
        sender.push(viewOf(media));
    }
    return sent;
}

Arrivals throughChannel(const Arrivals& sent, const ChannelConfig& config) {
    Arrivals left;
    Channel channel(config, [&](StreamPort port, const std::vector<std::uint8_t>& packet) {
        left.push_back({port, packet});
    });
    for (const Arrival& packet : sent) channel.push(packet.port, packet.bytes);
    channel.finish();
    return left;
}

}  // namespace mvrtpfec
