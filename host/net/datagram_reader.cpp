#include "host/net/datagram_reader.h"

#include <array>

#include "platform/net/datagrams.h"

namespace mvrtpfec {

namespace {

constexpr std::size_t largest = 65536;
constexpr std::size_t batch = 32;

}  // namespace

DatagramReader::DatagramReader() : room_(batch * largest) {}

void DatagramReader::readWaiting(asio::ip::udp::socket& socket, const Taker& take) {
    std::array<platform::DatagramBuffer, batch> buffers;
    for (std::size_t i = 0; i < batch; ++i) buffers[i] = {&room_[i * largest], largest};
    const std::size_t came =
        platform::receiveDatagrams(static_cast<platform::SocketHandle>(socket.native_handle()), buffers);
    for (std::size_t i = 0; i < came; ++i) take({buffers[i].data, buffers[i].size});
}

}  // namespace mvrtpfec
