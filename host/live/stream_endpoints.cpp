#include "host/live/stream_endpoints.h"

#include <cstdint>
#include <string_view>

#include "host/net/endpoint.h"
#include "host/usage_error.h"

namespace mvrtpfec {

namespace {

constexpr int mostPort = 65535;

}  // namespace

StreamEndpoints parseStream(const std::string& text) {
    const auto comma = text.find(',');
    const auto media = parseEndpoint(text.substr(0, comma));
    StreamEndpoints streams{media, media, media};
    if (comma == std::string::npos) {
        if (udpPortOf(StreamPort::fecB, media.port()) > mostPort)
            throw UsageError("the FEC streams need the ports two and four above the media's");
        for (const StreamPort port : {StreamPort::fecA, StreamPort::fecB})
            streams[static_cast<std::size_t>(port)].port(
                static_cast<std::uint16_t>(udpPortOf(port, media.port())));
        return streams;
    }
    const std::string_view ports = std::string_view(text).substr(comma + 1);
    const auto second = ports.find(',');
    if (second == std::string_view::npos) throw UsageError(text + ": has one FEC port, not two");
    streams[1].port(parsePort(ports.substr(0, second), text));
    streams[2].port(parsePort(ports.substr(second + 1), text));
    if (streams[0] == streams[1] || streams[0] == streams[2] || streams[1] == streams[2])
        throw UsageError(text + ": the three ports are to differ");
    return streams;
}

}  // namespace mvrtpfec
