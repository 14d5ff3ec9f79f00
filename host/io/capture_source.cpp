#include "host/io/capture_source.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "host/io/file_error.h"
#include "platform/files/files.h"

namespace mvrtpfec {

namespace {

/// DLT_RAW has another number in files than here, and yet another one on OpenBSD.
std::optional<LinkType> linkTypeOf(int dlt) {
    switch (dlt) {
        case DLT_NULL:
            return LinkType::null;
        case DLT_EN10MB:
            return LinkType::ethernet;
        case DLT_RAW:
            return LinkType::raw;
        case DLT_LOOP:
            return LinkType::loop;
        case DLT_LINUX_SLL:
            return LinkType::linuxSll;
        case DLT_IPV4:
            return LinkType::ipv4;
        case DLT_IPV6:
            return LinkType::ipv6;
        case DLT_LINUX_SLL2:
            return LinkType::linuxSll2;
        default:
            return std::nullopt;
    }
}

LinkType supportedLinkType(pcap_t* capture, const std::filesystem::path& path) {
    const int dlt = pcap_datalink(capture);
    if (const std::optional<LinkType> linkType = linkTypeOf(dlt)) return *linkType;
    const char* name = pcap_datalink_val_to_name(dlt);
    throw FileError(path, "captures of link type " + std::string(name ? name : std::to_string(dlt)) +
                              " are not supported");
}

std::optional<StreamPort> streamPortOf(std::uint16_t destinationPort, std::uint16_t mediaPort) {
    for (const StreamPort port : {StreamPort::media, StreamPort::fecA, StreamPort::fecB})
        if (udpPortOf(port, mediaPort) == destinationPort) return port;
    return std::nullopt;
}

/// Where seconds have but 32 bits, those of a capture are without sign.
std::int64_t secondsOf(const timeval& stamp) {
    return sizeof stamp.tv_sec > 4 ? std::int64_t{stamp.tv_sec} : static_cast<std::uint32_t>(stamp.tv_sec);
}

/// A broken file may hold any number of seconds; 64 bits of nanoseconds end in the year 2262.
std::chrono::nanoseconds timeOf(const timeval& stamp) {
    constexpr std::int64_t latest = 9'000'000'000;
    const std::int64_t seconds = std::clamp<std::int64_t>(secondsOf(stamp), 0, latest);
    const std::int64_t fraction = std::clamp<std::int64_t>(stamp.tv_usec, 0, 999'999'999);
    return std::chrono::seconds(seconds) + std::chrono::nanoseconds(fraction);
}

}  // namespace

CaptureSource::Capture CaptureSource::open(InputFile& file) {
    std::array<char, PCAP_ERRBUF_SIZE> reason{};
    Capture capture(
        pcap_fopen_offline_with_tstamp_precision(file.stream(), PCAP_TSTAMP_PRECISION_NANO, reason.data()));
    if (!capture) throw FileError(file.path(), "not a readable capture: " + std::string(reason.data()));
    file.release();
    return capture;
}

CaptureSource::CaptureSource(InputFile file, std::uint16_t mediaPort)
    : file_(std::move(file)), capture_(open(file_)), mediaPort_(mediaPort) {
    addressing_ = std::make_shared<FrameTemplate>(supportedLinkType(capture_.get(), file_.path()));
}

bool CaptureSource::read(Datagram& datagram) {
    while (breakage_.empty()) {
        pcap_pkthdr* header = nullptr;
        const std::uint8_t* bytes = nullptr;
        const int result = pcap_next_ex(capture_.get(), &header, &bytes);
        if (result == PCAP_ERROR_BREAK) break;
        if (result != 1) {
            noteBreak();
            break;
        }
        ++frames_;
        if (take(*header, {bytes, header->caplen}, datagram)) return true;
    }
    return false;
}

/// A pipe has no places.
void CaptureSource::noteBreak() {
    const std::int64_t place = platform::positionOf(pcap_file(capture_.get()));
    breakage_ = fmt::format("broken behind packet {}{}: {}", frames_,
                            place < 0 ? "" : fmt::format(", at byte {}", place), pcap_geterr(capture_.get()));
}

bool CaptureSource::take(const pcap_pkthdr& header, std::span<const std::uint8_t> frame, Datagram& datagram) {
    const std::optional<FrameLayers> layers = locateUdp(addressing_->linkType(), frame);
    if (!layers) return false;
    const std::optional<StreamPort> port = streamPortOf(layers->destinationPort, mediaPort_);
    if (!port) return false;
    if (!layers->complete || header.caplen < header.len) {
        ++cutDatagrams_;
        return false;
    }
    if (port == StreamPort::media || !addressing_->hasTaken()) addressing_->take(frame, *layers);

    const auto payload = frame.subspan(layers->payload, layers->payloadSize);
    datagram.port = *port;
    datagram.time = timeOf(header.ts);
    datagram.payload.assign(payload.begin(), payload.end());
    datagram.frame.assign(frame.begin(), frame.end());
    return true;
}

double CaptureSource::progress() const {
    return file_.progress(pcap_file(capture_.get()));
}

}  // namespace mvrtpfec
