#include "host/live/media_input.h"

#include "host/live/file_media_input.h"
#include "host/live/udp_media_input.h"
#include "host/net/endpoint.h"
#include "host/usage_error.h"
#include "platform/files/utf8_path.h"

namespace mvrtpfec {

namespace {

/// An option without effect is a mistake.
void requireUse(const MediaInputOptions& options, bool isNetwork, bool isFile) {
    if (options.loop && !isFile) throw UsageError("only a file can be looped");
    if (options.bitRate && isNetwork) throw UsageError("what comes over the network has its own bit rate");
    if (options.receiving.source && !isNetwork) throw UsageError("a source can be chosen of a group alone");
}

}  // namespace

std::unique_ptr<MediaInput> openMediaInput(const std::string& text, const MediaInputOptions& options) {
    using Carriage = UdpMediaInput::Carriage;
    const auto source = parseNetworkName(text);
    requireUse(options, source.has_value(), !source && text != "-");
    if (!source) return std::make_unique<FileMediaInput>(platform::pathFromUtf8(text), options);
    return std::make_unique<UdpMediaInput>(text, *source,
                                           text.starts_with("udp") ? Carriage::bare : Carriage::rtp, options);
}

}  // namespace mvrtpfec
