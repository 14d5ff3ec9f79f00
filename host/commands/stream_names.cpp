#include "host/commands/stream_names.h"

#include <array>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "host/net/endpoint.h"
#include "host/usage_error.h"
#include "platform/files/utf8_path.h"

namespace mvrtpfec {

namespace {

using Extension = std::pair<std::string_view, std::string_view>;
constexpr std::array<Extension, 14> extensions{{{".264", "h264"},
                                                {".h264", "h264"},
                                                {".avc", "h264"},
                                                {".265", "hevc"},
                                                {".263", "h263"},
                                                {".h263", "h263"},
                                                {".m4v", "mpeg4"},
                                                {".ts", "mpeg2ts"},
                                                {".m2ts", "mpeg2ts"},
                                                {".aac", "aac-adts"},
                                                {".adts", "aac-adts"},
                                                {".latm", "aac-latm"},
                                                {".loas", "aac-latm"},
                                                {".aacraw", "aac-raw"}}};

const StreamFormat* formatByExtension(const std::string& extension) {
    for (const auto& [known, format] : extensions) {
        if (known == extension) return findStreamFormat(format);
    }
    return nullptr;
}

NamedStream splitName(const std::string& text) {
    const auto colon = text.rfind(':');
    if (colon != std::string::npos) {
        if (const StreamFormat* const format = findStreamFormat(std::string_view(text).substr(colon + 1)))
            return {platform::pathFromUtf8(text.substr(0, colon)), format};
    }
    auto path = platform::pathFromUtf8(text);
    const StreamFormat* const format = formatByExtension(platform::utf8From(path.extension()));
    if (format == nullptr) throw UsageError(text + ": its extension tells no format; name it as FILE:FORMAT");
    return {std::move(path), format};
}

}  // namespace

NamedStream parseStreamName(const std::string& text) {
    NamedStream named = splitName(text);
    if (!named.format->hasPacketizer)
        throw UsageError(fmt::format("{}: {} can't be packetized", text, named.format->name));
    return named;
}

asio::ip::udp::endpoint parseTarget(const std::string& text) {
    const auto endpoint = parseEndpoint(text);
    if (endpoint.port() % 2 != 0)
        throw UsageError(text + ": RTP goes to an even port, its reports to the odd one above");
    // Session descriptions name IPv4 addresses alone.
    if (!endpoint.address().is_v4()) throw UsageError(text + ": is no IPv4 address with a port");
    return endpoint;
}

}  // namespace mvrtpfec
