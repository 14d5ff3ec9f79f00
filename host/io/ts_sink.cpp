#include "host/io/ts_sink.h"

#include "host/io/file_error.h"
#include "host/io/media_payload.h"

namespace mvrtpfec {

void TsSink::write(const Datagram& datagram) {
    if (datagram.port != StreamPort::media)
        throw FileError(path_, "a transport stream cannot hold FEC packets; write a .pcap or .pcapng");
    file_.write(mediaPayload(datagram.payload));
}

}  // namespace mvrtpfec
