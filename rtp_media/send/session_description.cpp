#include "rtp_media/send/session_description.h"

#include "support/string_format.h"

namespace mvrtpfec {

namespace {

using mvn::stringFormat;

constexpr std::uint32_t transportPayloadType = 33;

bool isAlphanumeric(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

std::string userName(std::string name) {
    for (char& c : name) {
        if (!isAlphanumeric(c)) c = '_';
    }
    return name;
}

/// kbit/s, rounded up, with 40 bytes of headers below RTP for each packet; in 32 bits, as far as they go.
int sessionBandwidth(std::uint32_t bitRate, std::uint32_t packetRate) {
    return static_cast<int>(bitRate + packetRate * 320 + 999) / 1000;
}

std::string bandwidthLines(const RTPStream& stream) {
    const std::uint32_t bitRate = stream.bitRate();
    return stringFormat("b=RS:%d\\", 1024) +
           stringFormat("b=AS:%d\\", sessionBandwidth(bitRate, stream.packetizer().getMaxPacketRate())) +
           stringFormat("b=TIAS:%d\\", static_cast<int>(bitRate));
}

std::string trackLines(const RTPStream& stream, int track) {
    std::string lines = stringFormat("a=control:trackID=%d\\", track);
    if (!stream.isVideo()) lines += "a=lang:eng\\";
    return lines + stringFormat("a=maxprate:%d\\", static_cast<int>(stream.packetizer().getMaxPacketRate()));
}

std::string mediaSection(const RTPStream& stream, int track) {
    const RTPPacketBuilder& packetizer = stream.packetizer();
    const bool transport = packetizer.payloadType() == transportPayloadType;
    std::string section =
        stringFormat("m=%s %d RTP/AVP %d\\", stream.isVideo() ? "video" : "audio",
                     static_cast<int>(stream.port()), static_cast<int>(packetizer.payloadType()));
    section += "b=RR:0\\";
    if (!transport) section += bandwidthLines(stream);
    section += packetizer.sdpAttributes() + "\\";
    return transport ? section : section + trackLines(stream, track);
}

std::string sessionLines(const SessionNames& names, const WallClock& wallTime) {
    const auto seconds = [&] { return static_cast<int>(static_cast<std::uint32_t>(wallTime() / 1000)); };
    const int id = seconds();
    const int version = seconds();
    return "v=0\\" +
           stringFormat("o=MV_%s %d %d IN IP4 ", userName(names.originUserName).c_str(), id, version) +
           names.originAddress + "\\s=" + names.sessionTitle.value_or(names.sessionName) + "\\c=IN IP4 " +
           names.connectionAddress + "/10\\b=RR:0\\t=0 0\\a=control:*\\a=range:npt=now-\\";
}

}  // namespace

std::optional<std::string> sessionDescription(const SessionNames& names, const RTPStreams& streams,
                                              const WallClock& wallTime) {
    std::string media;
    int track = 1;
    for (const auto& [id, stream] : streams) {
        if (!stream->packetizer().sdpReady()) return std::nullopt;
        media += mediaSection(*stream, track++);
    }
    return sessionLines(names, wallTime) + media;
}

}  // namespace mvrtpfec
