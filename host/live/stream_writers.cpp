#include "host/live/stream_writers.h"

namespace mvrtpfec {

namespace {

/// A source port is the media's, too: the others have theirs above it.
PacketWriter writerTo(asio::io_context& context, StreamPort port, const StreamEndpoints& streams,
                      SendingOptions options) {
    if (options.sourcePort != 0)
        options.sourcePort = static_cast<std::uint16_t>(udpPortOf(port, options.sourcePort));
    return PacketWriter(openSender(context, streams[static_cast<std::size_t>(port)], options));
}

}  // namespace

StreamWriters::StreamWriters(const StreamEndpoints& streams, const SendingOptions& options)
    : writers_{writerTo(context_, StreamPort::media, streams, options),
               writerTo(context_, StreamPort::fecA, streams, options),
               writerTo(context_, StreamPort::fecB, streams, options)} {}

std::uint64_t StreamWriters::refused() const {
    std::uint64_t sum = 0;
    for (const PacketWriter& writer : writers_) sum += writer.refused();
    return sum;
}

}  // namespace mvrtpfec
