#include "host/live/media_input.h"

#include "host/live/file_media_input.h"
#include "host/live/udp_media_input.h"
#include "host/net/endpoint.h"
#include "platform/files/utf8_path.h"

namespace mvrtpfec {

std::unique_ptr<MediaInput> openMediaInput(const std::string& text, const MediaInputOptions& options) {
    using Carriage = UdpMediaInput::Carriage;
    constexpr std::string_view udp = "udp://";
    constexpr std::string_view rtp = "rtp://";
    if (text.starts_with(udp))
        return std::make_unique<UdpMediaInput>(parseEndpoint(text.substr(udp.size())), Carriage::bare,
                                               options);
    if (text.starts_with(rtp))
        return std::make_unique<UdpMediaInput>(parseEndpoint(text.substr(rtp.size())), Carriage::rtp,
                                               options);
    return std::make_unique<FileMediaInput>(platform::pathFromUtf8(text), options);
}

}  // namespace mvrtpfec
