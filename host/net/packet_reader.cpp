#include "host/net/packet_reader.h"

#include "platform/net/datagrams.h"

namespace mvrtpfec {

namespace {

constexpr int batchesATurn = 4;

std::unique_ptr<RtpPacket> freshPacket() {
    return std::make_unique<RtpPacket>(RtpPacket::Unwritten{});
}

}  // namespace

PacketReader::PacketReader() {
    for (auto& packet : packets_) packet = freshPacket();
}

std::size_t PacketReader::readWaiting(asio::ip::udp::socket& socket, const Taker& take) {
    std::size_t came = 0;
    for (int i = 0; i < batchesATurn; ++i) {
        const std::size_t now = readBatch(socket, take);
        came += now;
        if (now < batch) break;
    }
    return came;
}

std::size_t PacketReader::readBatch(asio::ip::udp::socket& socket, const Taker& take) {
    std::array<platform::DatagramBuffer, batch> buffers;
    for (std::size_t i = 0; i < batch; ++i) buffers[i] = {packets_[i]->view.data, packets_[i]->bufferSize()};
    const std::size_t came =
        platform::receiveDatagrams(static_cast<platform::SocketHandle>(socket.native_handle()), buffers);
    for (std::size_t i = 0; i < came; ++i) {
        if (buffers[i].size > packets_[i]->bufferSize()) {
            ++tooLong_;
            continue;
        }
        packets_[i]->view.length = static_cast<std::uint16_t>(buffers[i].size);
        take(std::move(packets_[i]));
        packets_[i] = freshPacket();
    }
    return came;
}

}  // namespace mvrtpfec
