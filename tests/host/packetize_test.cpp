#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

#include "host/io/packet_source.h"
#include "tests/host/program_run.h"
#include "tests/host/sample_streams.h"

namespace mvrtpfec {
namespace {

constexpr std::uint16_t port = 5004;

class PacketizeCommand : public ProgramTest {
protected:
    static std::string packetize(const std::string& name, const std::string& options = "") {
        return "packetize " + streamPath(name).string() + " out.pcap --format " +
               std::string(formatOfStream(name)->name) + " " + options;
    }

    std::vector<Datagram> packets() const {
        const auto source = openSource(pathOf("out.pcap"), port);
        std::vector<Datagram> all;
        for (Datagram datagram; source->read(datagram);) all.push_back(datagram);
        return all;
    }

    std::vector<Datagram> packetsOf(const std::string& name, const std::string& options = "") const {
        const Outcome result = run(packetize(name, options));
        EXPECT_EQ(result.status, 0) << result.text;
        return packets();
    }

    /// RTP timestamps in stream order, each once, as a difference to the first.
    static std::vector<std::int32_t> timestamps(const std::vector<Datagram>& packets) {
        std::vector<std::int32_t> all;
        for (const Datagram& packet : packets) {
            const std::uint32_t first = readBigEndian32(&packets.front().payload[4]);
            all.push_back(static_cast<std::int32_t>(readBigEndian32(&packet.payload[4]) - first));
        }
        all.erase(std::unique(all.begin(), all.end()), all.end());
        return all;
    }

    static std::vector<std::int32_t> steps(std::int32_t step, int count) {
        std::vector<std::int32_t> all;
        for (int i = 0; i < count; ++i) all.push_back(i * step);
        return all;
    }

    std::string sdp() const {
        const Bytes bytes = load("out.sdp");
        return {bytes.begin(), bytes.end()};
    }
};

TEST_F(PacketizeCommand, PacketsAreNumberedMarkedAndCaptured) {
    const auto json =
        figures(packetize("h264_slices_aud.264", "--frame-rate 50 --ssrc 7 --payload-type 100"));
    const auto all = packets();
    EXPECT_EQ(json["packets"], all.size());
    EXPECT_EQ(json["kinds"]["9 delimiter"], 25);
    EXPECT_EQ(timestamps(all), steps(1800, 25));
    int marked = 0;
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const ConstRtpPacketView packet = viewOf(all[i].payload);
        EXPECT_EQ(packet.sequenceNumber(), i);
        EXPECT_EQ(all[i].payload[1] & 0x7F, 100);
        EXPECT_EQ(readBigEndian32(&all[i].payload[8]), 7u);
        marked += all[i].payload[1] >> 7;
        bytes += all[i].payload.size();
    }
    EXPECT_EQ(marked, 25);
    EXPECT_EQ(json["packet_bytes"], bytes);
    EXPECT_EQ(all.back().time, std::chrono::milliseconds(480));
}

TEST_F(PacketizeCommand, TimesAreTheStreamsOwn) {
    EXPECT_EQ(timestamps(packetsOf("h264_plain.264")), steps(3600, 25)) << "no unit parts the pictures";
    EXPECT_EQ(timestamps(packetsOf("h264_fields.264", "--frame-rate 25")), steps(1800, 20));
    EXPECT_EQ(timestamps(packetsOf("h263.263")), steps(3003, 30));
    EXPECT_EQ(timestamps(packetsOf("aac_lc.aac")), steps(1024, 48));
    EXPECT_EQ(timestamps(packetsOf("mpeg4_bframes.m4v", "--frame-rate 30000/1001")), steps(3003, 25));
    auto times = timestamps(packetsOf("mpeg4_bframes.m4v"));
    EXPECT_EQ(times[1], 3 * 3600);
    EXPECT_EQ(times[2], 3600);
    std::sort(times.begin(), times.end());
    EXPECT_EQ(times, steps(3600, 25));
    times = timestamps(packetsOf("h264_bframes_hrd.264"));
    std::sort(times.begin(), times.end());
    EXPECT_EQ(times.back() - times.front(), 24 * 3600);
}

TEST_F(PacketizeCommand, CaptureTimesNeverGoBack) {
    for (const std::string name : {"h264_bframes_hrd.264", "mpeg4_bframes.m4v"}) {
        const auto all = packetsOf(name);
        EXPECT_TRUE(std::is_sorted(all.begin(), all.end(),
                                   [](const Datagram& a, const Datagram& b) { return a.time < b.time; }));
        EXPECT_EQ(all.front().time, std::chrono::nanoseconds(0));
    }
}

TEST_F(PacketizeCommand, TransportStreamComesBackWholeWithItsClock) {
    store("in.ts", sample());
    const auto json = figures("packetize in.ts out.pcap --format mpeg2ts --sdp out.sdp");
    EXPECT_EQ(json["units"], 7974);
    EXPECT_EQ(json["payload_type"], 33);
    ASSERT_EQ(run("repair out.pcap out.ts").status, 0);
    EXPECT_EQ(load("out.ts"), sample());
    EXPECT_NE(sdp().find("m=video 5004 RTP/AVP 33\r\na=rtpmap:33 MP2T/90000\r\n"), std::string::npos);
    // 2 Mbit/s.
    const auto times = timestamps(packets());
    EXPECT_NEAR(times[100], 100 * 7 * 188 * 8 / 2000000.0 * 90000, 2);
    EXPECT_NEAR(json["span"], 5.996, 0.001);
}

TEST_F(PacketizeCommand, ParameterSetsGoWhereTheyShould) {
    const auto kept = packetsOf("h264_slices_aud.264", "--sdp out.sdp");
    const std::string attributes = sdp();
    const auto typesIn = [](const std::vector<Datagram>& all) {
        std::map<int, int> types;
        for (const Datagram& packet : all) ++types[packet.payload[12] & 0x1F];
        return types;
    };
    EXPECT_EQ(typesIn(kept), (std::map<int, int>{{1, 88}, {5, 12}}));
    EXPECT_NE(attributes.find("\r\na=rtpmap:96 H264/90000\r\na=fmtp:96 profile-level-id="),
              std::string::npos);
    EXPECT_TRUE(attributes.starts_with("v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns="));
    EXPECT_EQ(attributes.find('\\'), std::string::npos);

    const auto inBand = packetsOf("h264_slices_aud.264", "--parameter-sets inband");
    EXPECT_EQ(typesIn(inBand), (std::map<int, int>{{1, 88}, {5, 12}, {7, 3}, {8, 3}, {9, 25}}));
    packetsOf("h264_slices_aud.264", "--parameter-sets rewrite --sdp out.sdp");
    EXPECT_EQ(sdp(), attributes) << "written anew the same, as nothing of it is unusual";
}

/// The SPS of h264_fields.264 ends with its VUI; without vui_parameters_present_flag it has none.
TEST_F(PacketizeCommand, StreamThatGivesNoPacketSaysWhy) {
    const std::map<std::string, std::string> cases{
        {"packetize timeless.264 out.pcap --format h264 --frame-rate 25", "no VUI timing"},
        {"packetize in.ts out.pcap --format h264", "packets of 188 bytes: name its format mpeg2ts"},
        {"packetize slices.264 out.pcap --format h264", "no sequence parameter set found"},
        {"packetize " + streamPath("aac_lc.aac").string() + " out.pcap --format h264", "no packet came out"},
        {"packetize " + streamPath("klv.bin").string() + " out.pcap --format aac-latm",
         "no unit of this format"},
        {"packetize headless.m4v out.pcap --format mpeg4 --sdp out.sdp", "no visual object sequence header"},
    };
    store("timeless.264", Bytes{0, 0, 0, 1, 0x67, 77,   0,    10,   0xED, 0x32, 0x40,  // SPS
                                0, 0, 0, 1, 0x68, 0xCE, 0x3C, 0x80,                    // PPS
                                0, 0, 0, 1, 0x65, 0x88, 0x80, 0x10, 0x20, 0x30, 0x40});
    store("slices.264", Bytes{0, 0, 1, 0x65, 0x88, 0x80, 0x10, 0, 0, 1, 0x41, 0x9A, 0x10});
    store("in.ts", sample());
    store("headless.m4v", Bytes{0, 0, 1, 0xB6, 0x10, 1, 2, 3, 4, 5, 6, 7});
    const std::size_t before = fileCount();
    for (const auto& [arguments, reason] : cases) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.status, 1) << arguments;
        EXPECT_NE(result.text.find(reason), std::string::npos) << arguments << ": " << result.text;
        EXPECT_EQ(std::count(result.text.begin(), result.text.end(), '\n'), 1) << result.text;
    }
    EXPECT_EQ(fileCount(), before);
}

}  // namespace
}  // namespace mvrtpfec
