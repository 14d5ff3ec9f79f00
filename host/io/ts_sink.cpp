#include "host/io/ts_sink.h"

#include "core/rtp_packet.h"
#include "host/io/file_error.h"

namespace mvrtpfec {

void TsSink::write(const Datagram& datagram) {
    if (datagram.port != StreamPort::media)
        throw FileError(path_, "a transport stream cannot hold FEC packets; write a .pcap or .pcapng");
    if (datagram.payload.size() > rtpHeaderSize)
        file_.write(std::span(datagram.payload).subspan(rtpHeaderSize));
}

}  // namespace mvrtpfec
