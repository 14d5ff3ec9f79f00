#include "selftest/rtp_packet_builder_tester.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "core/big_endian.h"
#include "platform/files/files.h"
#include "platform/files/utf8_path.h"
#include "rtp_media/chain/nal_builder.h"
#include "rtp_media/chain/simple_media_data.h"

namespace mvrtpfec {

namespace {

constexpr std::uint32_t payloadType = 96;
constexpr std::uint32_t port = 5000;

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File open(std::string path) {
    const auto opened = [&] { return platform::openForReading(platform::pathFromUtf8(path)); };
    if (File file(opened(), std::fclose); file != nullptr) return file;
    std::replace(path.begin(), path.end(), '\\', '/');
    return {opened(), std::fclose};
}

/// None also for what opens and then can't be read, as a directory may.
std::optional<std::vector<BYTE>> readWhole(const std::string& path) {
    const File file = open(path);
    if (file == nullptr) return std::nullopt;
    std::vector<BYTE> bytes;
    std::array<BYTE, 65536> part;
    for (std::size_t count = part.size(); count == part.size();) {
        count = std::fread(part.data(), 1, part.size(), file.get());
        bytes.insert(bytes.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(count));
    }
    if (std::ferror(file.get()) != 0) return std::nullopt;
    return bytes;
}

/// Whether one of the lines, which backslashes separate, begins so.
bool hasLine(std::string_view attributes, std::string_view beginning) {
    while (true) {
        if (attributes.starts_with(beginning)) return true;
        const auto end = attributes.find('\\');
        if (end == std::string_view::npos) return false;
        attributes.remove_prefix(end + 1);
    }
}

}  // namespace

CRtpPacketBuilderTester::CRtpPacketBuilderTester(std::string filePath, StreamType streamType,
                                                 std::uint32_t expectedPackets)
    : filePath_(std::move(filePath)), streamType_(streamType), expectedPackets_(expectedPackets) {}

bool CRtpPacketBuilderTester::hasFile() const {
    const File file = open(filePath_);
    return file != nullptr && (std::fgetc(file.get()) != EOF || std::ferror(file.get()) == 0);
}

bool CRtpPacketBuilderTester::run(std::ostream& out) {
    PacketListener listener(out);
    const auto packetizer = RTPPacketBuilder::create(streamType_, payloadType, port, &listener,
                                                     ParameterSetMode::sdp, TimestampMode::presentation);
    const auto parser = createNALBuilder(streamType_);
    if (packetizer == nullptr || parser == nullptr) {
        listener.fail("no parser or no packetizer for stream type " +
                      std::to_string(static_cast<std::int32_t>(streamType_)));
        return false;
    }
    parser->setListener(packetizer.get());
    auto bytes = readWhole(filePath_);
    if (!bytes) {
        listener.fail("Can't open file");
        return false;
    }
    parser->input(SimpleMediaData::create(std::move(*bytes)).p);
    parser->flush();

    if (listener.packetCount() != expectedPackets_) {
        out << "Received " << listener.packetCount() << " packets\n";
        listener.fail("wrong number of packets");
    }
    if (!packetizer->sdpReady()) {
        listener.fail("SDP could not be built.");
    } else {
        if (!hasLine(packetizer->sdpAttributes(), "a=rtpmap:"))
            listener.fail("SDP map line is missing (\"a=rtpmap:\")");
        if (!hasLine(packetizer->sdpAttributes(), "a=fmtp:"))
            listener.fail("SDP format line is missing (\"a=fmtp:\")");
    }
    return !listener.hasFailures();
}

void CRtpPacketBuilderTester::PacketListener::fail(const std::string& failure) {
    out_ << "Fail: " << failure << '\n';
    failures_.push_back(failure);
}

CRtpPacketBuilderTester::PacketListener::Header CRtpPacketBuilderTester::PacketListener::headerOf(
    RTPMediaPacket& packet) {
    packet.writeTimestamp(0);
    std::array<std::uint8_t, 4096> usual;
    std::vector<std::uint8_t> large(packet.serializedSize() > usual.size() ? packet.serializedSize() : 0);
    std::uint8_t* const wire = large.empty() ? usual.data() : large.data();
    packet.serialize(wire, 0);
    return {(wire[1] & 0x80) != 0, readBigEndian16(wire + 2), readBigEndian32(wire + 4)};
}

void CRtpPacketBuilderTester::PacketListener::onPacket(std::unique_ptr<RTPMediaPacket> packet) {
    ++packetCount_;
    const Header header = headerOf(*packet);
    if (hasPrevious_) {
        if (previous_.marker && header.timestamp <= previous_.timestamp) fail("non increasing timestamp");
        if (header.sequence != static_cast<std::uint16_t>(previous_.sequence + 1))
            fail("discontinuous sequence number");
    }
    previous_ = header;
    hasPrevious_ = true;
}

}  // namespace mvrtpfec
