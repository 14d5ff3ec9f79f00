#include "host/media/session_file.h"

#include <fmt/format.h>

#include "host/io/output_file.h"

namespace mvrtpfec {

std::string sessionText(const RTPPacketBuilder& packetizer, bool isVideo) {
    std::string text = fmt::format(
        "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=mvrtpfec\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\nm={} {} RTP/AVP "
        "{}\r\n",
        isVideo ? "video" : "audio", packetizer.port(), packetizer.payloadType());
    for (const char c : packetizer.sdpAttributes()) {
        if (c == '\\')
            text += "\r\n";
        else
            text += c;
    }
    return text + "\r\n";
}

void writeSession(const std::filesystem::path& path, const std::string& text) {
    OutputFile file(path);
    file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    file.finish();
}

}  // namespace mvrtpfec
