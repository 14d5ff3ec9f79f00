#include "host/io/ts_source.h"

#include "core/rtp_packet.h"
#include "host/io/own_ssrc.h"

namespace mvrtpfec {

namespace {

constexpr std::size_t tsPacketsPerRtpPacket = 7;

}  // namespace

bool TsSource::read(Datagram& datagram) {
    datagram.port = StreamPort::media;
    datagram.frame.clear();
    datagram.payload.assign(rtpHeaderSize, 0);
    for (std::size_t i = 0; i < tsPacketsPerRtpPacket; ++i) {
        const auto packet = packets_->next();
        if (!packet) break;
        if (i == 0) writeHeader(datagram, *packet);
        datagram.payload.insert(datagram.payload.end(), packet->bytes.begin(), packet->bytes.end());
    }
    if (datagram.payload.size() > rtpHeaderSize) return true;
    packets_->throwIfBroken();
    return false;
}

void TsSource::writeHeader(Datagram& datagram, const TimedTsPacket& first) {
    std::uint8_t* header = datagram.payload.data();
    header[0] = versionTwo;
    header[1] = mediaPayloadType;
    writeBigEndian16(header + 2, sequenceNumber_++);
    writeBigEndian32(header + 4, first.rtpTimestamp);
    writeBigEndian32(header + 8, ownSsrc);
    datagram.time = first.elapsed;
}

}  // namespace mvrtpfec
