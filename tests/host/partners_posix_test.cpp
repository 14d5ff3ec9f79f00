#include <cstdlib>
#include <limits>
#include <sstream>
#include <thread>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "host/io/packet_source.h"
#include "rtp_media/audio/nal_aac.h"
#include "rtp_media/audio/nal_aac_latm_loas.h"
#include "rtp_media/bits/bit_reader.h"
#include "tests/host/program_run.h"
#include "tests/host/sample_streams.h"
#include "tests/host/udp_replay-posix.h"

namespace mvrtpfec {
namespace {

bool isInstalled(const std::string& command) {
    return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

/// The raw_data_block of a LOAS frame of one subframe, which stands behind its length.
Bytes latmPayload(NAL& unit, const StreamMuxConfig* previous) {
    const LoasFrame& frame = dynamic_cast<NALAACLATMLOAS&>(unit).frame(previous);
    BitReader bits(unit.bytes());
    bits.skip(frame.payloadStart);
    std::size_t size = 0;
    for (std::uint32_t part = 255; part == 255; size += part) part = bits.bits(8);
    Bytes payload;
    while (payload.size() < size) payload.push_back(static_cast<std::uint8_t>(bits.bits(8)));
    return payload;
}

/// Slices and parameter sets without their start codes; how they are parted is the receiver's affair.
std::vector<Bytes> nalUnits(const KeptUnits& found) {
    std::vector<Bytes> all;
    for (const auto& unit : found.units) {
        const auto header = *unit->header();
        const unsigned type = header.value & 0x1FU;
        if (type == 6 || type == 9) continue;
        auto bytes = unit->bytes().subspan(static_cast<std::size_t>(header.startCodeLength));
        while (bytes.back() == 0) bytes = bytes.first(bytes.size() - 1);
        all.emplace_back(bytes.begin(), bytes.end());
    }
    return all;
}

/// Without the zeros behind each, of which GStreamer adds some.
std::vector<Bytes> pictures(const KeptUnits& found) {
    std::vector<Bytes> all = found.contents();
    for (Bytes& picture : all)
        while (picture.back() == 0) picture.pop_back();
    return all;
}

/// What of a unit a receiver gives out.
Bytes received(NAL& unit, std::optional<StreamMuxConfig>& config) {
    constexpr std::uint8_t firstPlane = 0xB6;
    std::span<const std::uint8_t> bytes = unit.bytes();
    switch (unit.streamType()) {
        case StreamType::aacLatm: {
            const Bytes payload = latmPayload(unit, config ? &*config : nullptr);
            config = dynamic_cast<NALAACLATMLOAS&>(unit).frame(nullptr).config;
            return payload;
        }
        case StreamType::aacAdts:
        case StreamType::aacRaw:
            bytes = bytes.subspan(dynamic_cast<NALAAC&>(unit).frame()->headerLength);
            break;
        case StreamType::mpeg4Visual:
            if (unit.header()->value < firstPlane) bytes = {};
            break;
        default:
            break;
    }
    return {bytes.begin(), bytes.end()};
}

std::string copyFirstStream(const std::string& file) {
    return "-map 0:0 -c copy -f data " + file;
}

/// A sample packetized into out.pcap and out.sdp.
class Partner : public ProgramTest, public testing::WithParamInterface<const char*> {
protected:
    StreamType type() const { return formatOfStream(GetParam())->type; }

    void packetize(const std::string& options) const {
        const Outcome result =
            run("packetize " + streamPath(GetParam()).string() + " out.pcap --sdp out.sdp --format " +
                std::string(formatOfStream(GetParam())->name) + " " + options);
        ASSERT_EQ(result.status, 0) << result.text;
    }

    std::vector<Datagram> packets(std::uint16_t port) const {
        const auto source = openSource(pathOf("out.pcap"), port);
        std::vector<Datagram> all;
        for (Datagram datagram; source->read(datagram);) all.push_back(datagram);
        return all;
    }

    /// out.bin has the sample's units from `first` on, `left` of them missing at the end.
    void expectUnitsBack(std::size_t first = 0, std::size_t left = 0) const {
        KeptUnits sent = unitsOfFile(streamPath(GetParam()), type());
        const auto whole = [] { return std::numeric_limits<std::size_t>::max(); };
        if (type() == StreamType::h264) {
            EXPECT_EQ(nalUnits(unitsOf(type(), load("out.bin"), whole)), nalUnits(sent));
            return;
        }
        if (type() == StreamType::h263) {
            EXPECT_EQ(pictures(unitsOf(type(), load("out.bin"), whole)), pictures(sent));
            return;
        }
        Bytes expected;
        std::optional<StreamMuxConfig> config;
        for (std::size_t i = 0; i < sent.units.size(); ++i) {
            const Bytes part = received(*sent.units[i], config);
            if (i >= first && i + left < sent.units.size())
                expected.insert(expected.end(), part.begin(), part.end());
        }
        Bytes found = load("out.bin");
        if (first > 0) found.erase(found.begin(), found.end() - std::ssize(expected));
        EXPECT_EQ(found.size(), expected.size());
        EXPECT_TRUE(found == expected);
    }

    /// As GStreamer names a stream of our session description.
    std::string caps() const {
        const Bytes bytes = load("out.sdp");
        const std::string sdp(bytes.begin(), bytes.end());
        const std::string map = between(sdp, "a=rtpmap:", "\r\n");
        std::string caps = fmt::format(
            "application/x-rtp-stream,media=(string){},payload=(int){},clock-rate=(int){}"
            ",encoding-name=(string)\"{}\"",
            between(sdp, "m=", " "), map.substr(0, map.find(' ')), between(map, "/", "/"),
            upperCase(between(map, " ", "/")));
        std::istringstream parameters(between(between(sdp, "a=fmtp:", "\r\n"), " ", "\r\n"));
        for (std::string word; std::getline(parameters >> std::ws, word, ';');) {
            const std::size_t sign = word.find('=');
            const std::string name = lowerCase(word.substr(0, sign));
            if (name != "sprop-parameter-sets")
                caps += fmt::format(",{}=(string)\"{}\"", name, word.substr(sign + 1));
        }
        return caps;
    }

private:
    /// What stands behind the first `before`, up to `after` or the end.
    static std::string between(const std::string& text, const std::string& before, const std::string& after) {
        const std::size_t at = text.find(before);
        if (at == std::string::npos) return "";
        const std::size_t begin = at + before.size();
        return text.substr(begin, text.find(after, begin) - begin);
    }
    static std::string upperCase(std::string text) {
        for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return text;
    }
    static std::string lowerCase(std::string text) {
        for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return text;
    }
};

TEST_P(Partner, FfmpegReceivesTheUnits) {
    if (!isInstalled("ffmpeg -version")) GTEST_SKIP() << "ffmpeg is not installed";
    const UdpReplay replay;
    const std::string port = std::to_string(replay.port());
    packetize("--parameter-sets inband --port " + port);
    Outcome ffmpeg;
    std::thread reader([&] {
        // It ends when nothing comes for a second.
        ffmpeg = runProcess(
            "timeout",
            "30 ffmpeg -v warning -y -protocol_whitelist file,udp,rtp -listen_timeout 1 -i out.sdp " +
                copyFirstStream("out.bin") + " </dev/null",
            pathOf(""));
    });
    const bool listens = replay.waitForListener();
    if (listens) replay.send(packets(replay.port()));
    reader.join();
    EXPECT_TRUE(listens);
    EXPECT_EQ(ffmpeg.status, 0) << ffmpeg.text;
    if (type() != StreamType::mpeg2ts) return expectUnitsBack();
    // It takes the transport stream apart.
    const Outcome direct = runProcess(
        "ffmpeg", "-v error -i " + streamPath(GetParam()).string() + " " + copyFirstStream("in.bin"),
        pathOf(""));
    ASSERT_EQ(direct.status, 0) << direct.text;
    const Bytes sent = load("in.bin");
    const Bytes found = load("out.bin");
    // It keeps the last picture, which nothing ends.
    EXPECT_GT(found.size(), sent.size() / 100 * 99);
    EXPECT_TRUE(std::equal(found.begin(), found.end(), sent.begin(), sent.begin() + std::ssize(found)));
}

TEST_P(Partner, GStreamerReceivesTheUnits) {
    if (!isInstalled("gst-inspect-1.0 rtpstreamdepay"))
        GTEST_SKIP() << "GStreamer's RTP plugin is not installed";
    const std::map<StreamType, std::string> elements{
        {StreamType::h264, "rtph264depay ! video/x-h264,stream-format=byte-stream,alignment=nal"},
        {StreamType::h263, "rtph263pdepay"},
        {StreamType::mpeg4Visual, "rtpmp4vdepay"},
        {StreamType::aacAdts, "rtpmp4gdepay"},
        {StreamType::aacRaw, "rtpmp4gdepay"},
        {StreamType::aacLatm, "rtpmp4adepay"},
        {StreamType::mpeg2ts, "rtpmp2tdepay"}};
    packetize("--parameter-sets inband");
    Bytes framed;  // RFC 4571
    for (const Datagram& packet : packets(5004)) {
        framed.push_back(static_cast<std::uint8_t>(packet.payload.size() >> 8));
        framed.push_back(static_cast<std::uint8_t>(packet.payload.size()));
        framed.insert(framed.end(), packet.payload.begin(), packet.payload.end());
    }
    store("in.rtp", framed);
    const Outcome result =
        runProcess("timeout",
                   "60 gst-launch-1.0 -q filesrc location=in.rtp ! '" + caps() + "' ! rtpstreamdepay ! " +
                       elements.at(type()) + " ! filesink location=out.bin",
                   pathOf(""));
    EXPECT_EQ(result.status, 0) << result.text;
    // Its LATM element gives the first packet out as it is. Its element for AAC takes frames of twice
    // constantDuration for every other one, and holds the last one back.
    const bool doubled = type() == StreamType::aacRaw && caps().find("sbr-enabled") != std::string::npos &&
                         caps().find("(int)48000") != std::string::npos;
    expectUnitsBack(type() == StreamType::aacLatm ? 1 : 0, doubled ? 1 : 0);
}

TEST_P(Partner, TsharkFindsNothingMalformed) {
    if (!isInstalled("tshark --version")) GTEST_SKIP() << "tshark is not installed";
    packetize("--parameter-sets inband");
    const std::map<StreamType, std::string> dissectors{{StreamType::h264, "h264"},
                                                       {StreamType::mpeg4Visual, "mp4v-es"}};
    const auto found = dissectors.find(type());
    const std::string base = "-r out.pcap -d udp.port==5004,rtp " +
                             (found != dissectors.end() ? "-d rtp.pt==96," + found->second : std::string()) +
                             " -T fields -e rtp.seq -Y ";
    const auto lines = [&](const std::string& filter) {
        std::istringstream text(runProcess("tshark", base + "'" + filter + "'", pathOf("")).text);
        std::size_t count = 0;
        for (std::string line; std::getline(text, line);)
            if (!line.empty() && line.find_first_not_of("0123456789") == std::string::npos) ++count;
        return count;
    };
    EXPECT_EQ(lines("rtp.version == 2 && udp.checksum.status != 0"), packets(5004).size());
    EXPECT_EQ(lines("_ws.malformed || _ws.expert.severity == error"), 0u);
}

INSTANTIATE_TEST_SUITE_P(Samples, Partner,
                         testing::Values("h264_slices_aud.264", "h264_bframes_hrd.264",
                                         "h264_interlaced_hrd.264", "h264_fields.264", "h264_plain.264",
                                         "h264_large.264", "h264_3byte.264", "h264_4byte.264", "h263.263",
                                         "h263_4cif.263", "mpeg4.m4v", "mpeg4_bframes.m4v", "aac_lc.aac",
                                         "aac_crc.aac", "aac_lc.aacraw", "aac_he_v1.aacraw",
                                         "aac_he_v2.aacraw", "aac_he_v2_compatible.aacraw", "aac_latm.latm",
                                         "aac_he_v1.latm", "aac_he_v2.latm", "../sample.ts"),
                         [](const auto& sample) {
                             std::string name = sample.param;
                             std::erase_if(name, [](char c) { return c == '/' || c == '.'; });
                             return name;
                         });

}  // namespace
}  // namespace mvrtpfec
