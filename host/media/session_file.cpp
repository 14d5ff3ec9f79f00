#include "host/media/session_file.h"

#include <fmt/format.h>

#include "host/io/output_file.h"

namespace mvrtpfec {

std::string sessionText(const RTPPacketBuilder& packetizer, bool isVideo) {
    const std::string text = fmt::format(
        "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=mvrtpfec\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\nm={} {} RTP/AVP "
        "{}\r\n",
        isVideo ? "video" : "audio", packetizer.port(), packetizer.payloadType());
    return text + withLineEnds(packetizer.sdpAttributes()) + "\r\n";
}

std::string withLineEnds(std::string_view text) {
    std::string lines;
    for (const char c : text) {
        if (c == '\\')
            lines += "\r\n";
        else
            lines += c;
    }
    return lines;
}

void writeSession(const std::filesystem::path& path, const std::string& text) {
    OutputFile file(path);
    file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    file.finish();
}

}  // namespace mvrtpfec
