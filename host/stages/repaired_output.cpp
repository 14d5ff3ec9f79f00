#include "host/stages/repaired_output.h"

namespace mvrtpfec {

RepairedOutput::RepairedOutput(const std::filesystem::path& path, std::uint16_t mediaPort,
                               const PacketSource& source)
    : addressing_(std::make_shared<FrameTemplate>(*source.addressing())),
      sink_(openSink(path, mediaPort, addressing_)) {}

void RepairedOutput::write(ConstRtpPacketView packet, const Moment& moment) {
    *addressing_ = moment.addressing;
    datagram_.time = moment.time;
    datagram_.payload.assign(packet.data, packet.data + packet.length);
    sink_->write(datagram_);
}

}  // namespace mvrtpfec
