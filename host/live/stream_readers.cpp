#include "host/live/stream_readers.h"

#include <utility>

#include "platform/net/datagrams.h"

namespace mvrtpfec {

StreamReaders::StreamReaders(const StreamEndpoints& streams, const ReceivingOptions& options, Taker take)
    : take_(std::move(take)),
      sockets_{openReceiver(context_, streams[0], options), openReceiver(context_, streams[1], options),
               openReceiver(context_, streams[2], options)} {
    for (const StreamPort port : {StreamPort::media, StreamPort::fecA, StreamPort::fecB}) readNext(port);
}

void StreamReaders::runFor(std::chrono::milliseconds time) {
    context_.run_for(time);
}

std::uint64_t StreamReaders::overrun() {
    std::uint64_t sum = 0;
    for (auto& socket : sockets_)
        sum += platform::droppedDatagrams(static_cast<platform::SocketHandle>(socket.native_handle()));
    return sum;
}

void StreamReaders::readNext(StreamPort port) {
    auto& socket = sockets_[static_cast<std::size_t>(port)];
    socket.async_wait(asio::ip::udp::socket::wait_read, [this, port, &socket](const asio::error_code& error) {
        if (error) return;
        reader_.readWaiting(socket, [&](auto packet) { take_(port, std::move(packet)); });
        readNext(port);
    });
}

}  // namespace mvrtpfec
