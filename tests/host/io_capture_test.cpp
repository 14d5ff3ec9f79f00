#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>

#include "host/io/capture_writer.h"
#include "host/io/packet_sink.h"
#include "host/io/packet_source.h"
#include "host/usage_error.h"
#include "tests/host/io_test_frames.h"

namespace mvrtpfec {
namespace {

using std::chrono::nanoseconds;

constexpr std::uint16_t mediaPort = 5004;
constexpr nanoseconds start{1'700'000'000'123'456'789};

class CaptureTest : public FileTest {
protected:
    /// A capture of these frames, a microsecond apart.
    std::filesystem::path capture(const std::string& name, const std::vector<Bytes>& frames,
                                  LinkType linkType = LinkType::ethernet) {
        const auto writer = openCapture(pathOf(name), formatOf(name), linkType);
        nanoseconds time = start;
        for (const Bytes& frame : frames) {
            writer->writeFrame(time, frame);
            time += nanoseconds(1000);
        }
        writer->finish();
        return pathOf(name);
    }

    /// What `protect` does: media as they are, one FEC packet behind them.
    void copyWithFec(const std::filesystem::path& from, const std::filesystem::path& to) {
        const auto source = openSource(from, mediaPort);
        const auto sink = openSink(to, mediaPort, source->addressing());
        Datagram datagram;
        while (source->read(datagram)) sink->write(datagram);
        sink->write({StreamPort::fecB, start, rtpPacket(9, 57), {}});
        sink->finish();
    }

    static std::vector<Datagram> readAll(PacketSource& source) {
        std::vector<Datagram> all;
        for (Datagram datagram; source.read(datagram);) all.push_back(datagram);
        return all;
    }
};

Bytes mediaFrame(std::uint16_t number, const Wrapping& how = allWrappings()[0]) {
    return wrap(how, mediaPort, rtpPacket(number, 40u + number));
}

const std::vector<Bytes> threeFrames = {mediaFrame(0), mediaFrame(1), mediaFrame(2)};

TEST_F(CaptureTest, CopiesMediaFramesAndAddsFecInEveryWrapping) {
    for (const char* extension : {".pcap", ".pcapng"}) {
        for (const Wrapping& how : allWrappings()) {
            SCOPED_TRACE(how.name + extension);
            const auto copy = pathOf(std::string("out") + extension);
            copyWithFec(capture(std::string("in") + extension, {mediaFrame(1, how), mediaFrame(2, how)},
                                how.linkType),
                        copy);

            const auto source = openSource(copy, mediaPort);
            const std::vector<Datagram> all = readAll(*source);
            ASSERT_EQ(all.size(), 3u);
            EXPECT_EQ(all[1].port, StreamPort::media);
            EXPECT_EQ(all[1].time, start + nanoseconds(1000));
            EXPECT_EQ(all[1].payload, rtpPacket(2, 42));
            EXPECT_EQ(all[1].frame, mediaFrame(2, how));
            EXPECT_EQ(all[2].port, StreamPort::fecB);
            EXPECT_EQ(all[2].payload, rtpPacket(9, 57));
            Bytes built = wrap(how, mediaPort + 4, rtpPacket(9, 57));
            const std::size_t udp = how.link.size() + how.ip.size();
            for (const std::size_t sum : {how.link.size() + 10, udp + 6})
                if (sum > udp || how.ip[0] >> 4 == 4) std::copy_n(&all[2].frame[sum], 2, &built[sum]);
            EXPECT_EQ(all[2].frame, built);
            EXPECT_EQ(source->addressing()->linkType(), how.linkType);
            EXPECT_EQ(source->progress(), 1);
        }
    }
}

/// A protocol analyser of its own agrees with what is written: lengths, checksums, times, ports.
TEST_F(CaptureTest, IsReadByTshark) {
    if (std::system("tshark --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "tshark is not installed";
    std::string name = "out.pcap";
    for (const Wrapping& how : allWrappings()) {
        SCOPED_TRACE(how.name);
        copyWithFec(capture("in.pcap", {mediaFrame(0, how)}, how.linkType), pathOf(name));
        const std::string tshark =
            "tshark -r " + pathOf(name).string() +
            " -t r -o ip.check_checksum:TRUE -o udp.check_checksum:TRUE -T fields -E separator=,"
            " -e udp.srcport -e udp.dstport -e udp.length -e ip.checksum.status -e udp.checksum.status"
            " -e _ws.malformed -e frame.time_epoch 2>/dev/null >" +
            pathOf("fields").string();
        ASSERT_EQ(std::system(tshark.c_str()), 0);
        const Bytes output = load("fields");
        const std::string fields(output.begin(), output.end());
        name = name == "out.pcap" ? "out.pcapng" : "out.pcap";
        const std::string lastLine = fields.substr(fields.find('\n') + 1);
        const std::string ipGood = how.ip[0] >> 4 == 4 ? "1" : "";
        EXPECT_EQ(lastLine, "12345,5008,65," + ipGood + ",1,,1700000000.123456789\n") << fields;
    }
}

TEST_F(CaptureTest, LeavesOutWhatIsNotOursAndCountsWhatIsCut) {
    std::vector<Bytes> frames = {mediaFrame(0), mediaFrame(1), Bytes(5)};
    frames[1].pop_back();
    for (std::uint16_t port = mediaPort - 1; port < mediaPort + 7; ++port)
        frames.push_back(wrap(allWrappings()[0], port, rtpPacket(1, 40)));
    capture("in.pcap", frames);
    Bytes bytes = load("in.pcap");
    const std::size_t firstOriginalLength = 24 + 12;
    ++bytes[firstOriginalLength];

    const auto source = openSource(store("in.pcap", bytes), mediaPort);
    std::vector<StreamPort> ports;
    for (const Datagram& datagram : readAll(*source)) ports.push_back(datagram.port);
    EXPECT_EQ(ports, (std::vector{StreamPort::media, StreamPort::fecA, StreamPort::fecB}));
    EXPECT_EQ(source->cutDatagrams(), 2u);
}

TEST_F(CaptureTest, DeliversWhatStandsBeforeABrokenPlace) {
    for (const std::string name : {"in.pcap", "in.pcapng"}) {
        capture(name, threeFrames);
        std::filesystem::resize_file(pathOf(name), load(name).size() - 7);
        const auto source = openSource(pathOf(name), mediaPort);
        Datagram datagram;
        EXPECT_TRUE(source->read(datagram) && source->read(datagram));
        EXPECT_FALSE(source->read(datagram) || source->read(datagram));
        const std::string place = "broken behind packet 2, at byte " + std::to_string(load(name).size());
        EXPECT_TRUE(source->breakage().starts_with(place + ": trunc")) << source->breakage();
    }
}

TEST_F(CaptureTest, NamesTheFileThatCannotBeRead) {
    capture("wireless.pcap", threeFrames);
    Bytes wireless = load("wireless.pcap");
    wireless[20] = 105;
    store("wireless.pcap", wireless);
    store("empty.pcapng", {});
    store("text.pcap", Bytes(99, 'x'));
    for (const std::string error :
         {"none.pcap: cannot open: No such file or directory", "empty.pcapng: the file is empty",
          "text.pcap: not a readable capture: unknown file format",
          "wireless.pcap: captures of link type IEEE802_11 are not supported"}) {
        const auto path = pathOf(error.substr(0, error.find(':')));
        EXPECT_EQ(errorOf([&] { openSource(path, mediaPort); }), error);
    }
    EXPECT_THROW(openSource(pathOf("a.mp4"), mediaPort), UsageError);
}

TEST_F(CaptureTest, LeavesNoHalfWrittenCapture) {
    {
        const auto sink =
            openSink(pathOf("out.pcap"), mediaPort, std::make_shared<FrameTemplate>(LinkType::ethernet));
        sink->write({StreamPort::fecA, start, rtpPacket(1, 40), {}});
    }
    EXPECT_EQ(fileCount(), 0u);
}

}  // namespace
}  // namespace mvrtpfec
