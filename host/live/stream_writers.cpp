#include "host/live/stream_writers.h"

#include "host/commands/commands.h"

namespace mvrtpfec {

namespace {

/// A source port is the media's, too: the others have theirs above it.
PacketWriter writerTo(asio::io_context& context, StreamPort port, const asio::ip::udp::endpoint& media,
                      SendingOptions options) {
    if (options.sourcePort != 0)
        options.sourcePort = static_cast<std::uint16_t>(udpPortOf(port, options.sourcePort));
    return PacketWriter(openSender(context, endpointOf(port, media), options));
}

}  // namespace

asio::ip::udp::endpoint endpointOf(StreamPort port, const asio::ip::udp::endpoint& media) {
    constexpr int mostPort = 65535;
    const int number = udpPortOf(port, media.port());
    if (number > mostPort) throw UsageError("the FEC streams need the ports two and four above the media's");
    return {media.address(), static_cast<std::uint16_t>(number)};
}

StreamWriters::StreamWriters(const asio::ip::udp::endpoint& media, const SendingOptions& options)
    : writers_{writerTo(context_, StreamPort::media, media, options),
               writerTo(context_, StreamPort::fecA, media, options),
               writerTo(context_, StreamPort::fecB, media, options)} {}

std::uint64_t StreamWriters::refused() const {
    std::uint64_t sum = 0;
    for (const PacketWriter& writer : writers_) sum += writer.refused();
    return sum;
}

}  // namespace mvrtpfec
