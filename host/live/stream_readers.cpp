#include "host/live/stream_readers.h"

#include <system_error>
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
    for (std::size_t i = 0; i < sockets_.size(); ++i) {
        const std::uint32_t dropped =
            platform::droppedDatagrams(static_cast<platform::SocketHandle>(sockets_[i].native_handle()));
        // The system's count begins anew after 32 bits.
        overrun_ += dropped - std::exchange(dropped_[i], dropped);
    }
    return overrun_;
}

void StreamReaders::readNext(StreamPort port) {
    auto& socket = sockets_[static_cast<std::size_t>(port)];
    socket.async_wait(asio::ip::udp::socket::wait_read, [this, port, &socket](const asio::error_code& error) {
        if (error) throw std::system_error(error, "can't wait for datagrams");
        reader_.readWaiting(socket, [&](auto packet) { take_(port, std::move(packet)); });
        readNext(port);
    });
}

}  // namespace mvrtpfec
