#include <array>
#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "host/io/capture_writer.h"
#include "host/io/packet_sink.h"
#include "host/io/packet_source.h"
#include "tests/host/io_test_frames.h"

namespace mvrtpfec {
namespace {

using std::chrono::nanoseconds;

constexpr std::uint16_t mediaPort = 5004;
constexpr nanoseconds start{1'700'000'000'123'456'789};

class CaptureTest : public FileTest {
protected:
    /// A capture of one media frame for each number, a microsecond apart.
    std::filesystem::path capture(const std::string& name, const Wrapping& how, std::uint16_t count) {
        const auto writer = openCapture(pathOf(name), formatOf(name), how.linkType);
        for (std::uint16_t i = 0; i < count; ++i)
            writer->writeFrame(start + i * nanoseconds(1000), wrap(how, mediaPort, rtpPacket(i, 40u + i)));
        writer->finish();
        return pathOf(name);
    }

    std::filesystem::path captureFrame(const std::string& name, const Bytes& frame) {
        const auto writer = openCapture(pathOf(name), formatOf(name), LinkType::ethernet);
        writer->writeFrame(start, frame);
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

const Wrapping ethernet = allWrappings()[0];

TEST_F(CaptureTest, CopiesMediaFramesAndAddsFecInEveryWrapping) {
    for (const char* extension : {".pcap", ".pcapng"}) {
        for (const Wrapping& how : allWrappings()) {
            SCOPED_TRACE(how.name + extension);
            const auto input = capture(std::string("in") + extension, how, 3);
            copyWithFec(input, pathOf(std::string("out") + extension));

            const auto source = openSource(pathOf(std::string("out") + extension), mediaPort);
            const std::vector<Datagram> all = readAll(*source);
            ASSERT_EQ(all.size(), 4u);
            EXPECT_EQ(all[2].port, StreamPort::media);
            EXPECT_EQ(all[2].time, start + nanoseconds(2000));
            EXPECT_EQ(all[2].payload, rtpPacket(2, 42));
            EXPECT_EQ(all[2].frame, wrap(how, mediaPort, rtpPacket(2, 42)));
            EXPECT_EQ(all[3].port, StreamPort::fecB);
            EXPECT_EQ(all[3].payload, rtpPacket(9, 57));
            EXPECT_EQ(source->addressing()->linkType(), how.linkType);
            EXPECT_EQ(source->progress(), 1);
        }
    }
}

/// The output of `command`, standard error left out.
std::string outputOf(const std::string& command) {
    std::string output;
    std::FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");
    std::array<char, 256> line;
    while (std::fgets(line.data(), line.size(), pipe) != nullptr) output += line.data();
    pclose(pipe);
    return output;
}

/// A protocol analyser of its own agrees with what is written: lengths, checksums, times, ports.
TEST_F(CaptureTest, IsReadByTshark) {
    if (std::system("tshark --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "tshark is not installed";
    bool isPcap = false;
    for (const Wrapping& how : allWrappings()) {
        SCOPED_TRACE(how.name);
        isPcap = !isPcap;
        const std::string extension = isPcap ? ".pcap" : ".pcapng";
        copyWithFec(capture("in" + extension, how, 1), pathOf("out" + extension));
        const std::string fields = outputOf(
            "tshark -r " + pathOf("out" + extension).string() +
            " -t r -o ip.check_checksum:TRUE -o udp.check_checksum:TRUE -T fields -E separator=, -e "
            "udp.srcport"
            " -e udp.dstport -e udp.length -e ip.checksum.status -e udp.checksum.status -e _ws.malformed"
            " -e frame.time_epoch");
        const std::string lastLine = fields.substr(fields.find('\n') + 1);
        const std::string ipGood = how.ip[0] >> 4 == 4 ? "1" : "";
        EXPECT_EQ(lastLine, "12345,5008,65," + ipGood + ",1,,1700000000.123456789\n") << fields;
    }
}

TEST_F(CaptureTest, LeavesOutWhatIsNotOurs) {
    const auto writer = openCapture(pathOf("in.pcap"), FileFormat::pcap, LinkType::ethernet);
    for (const int port : {5003, 5004, 5005, 5006, 5007, 5008, 5010})
        writer->writeFrame(start, wrap(ethernet, static_cast<std::uint16_t>(port), rtpPacket(1, 40)));
    writer->writeFrame(start, Bytes(5));
    writer->finish();

    const auto source = openSource(pathOf("in.pcap"), mediaPort);
    std::vector<StreamPort> ports;
    for (const Datagram& datagram : readAll(*source)) ports.push_back(datagram.port);
    EXPECT_EQ(ports, (std::vector{StreamPort::media, StreamPort::fecA, StreamPort::fecB}));
    EXPECT_EQ(source->cutDatagrams(), 0u);
}

TEST_F(CaptureTest, CountsDatagramsThatAreCut) {
    Bytes frame = wrap(ethernet, mediaPort, rtpPacket(1, 40));
    frame.pop_back();
    const auto source = openSource(captureFrame("in.pcap", frame), mediaPort);
    EXPECT_TRUE(readAll(*source).empty());
    EXPECT_EQ(source->cutDatagrams(), 1u);

    Bytes bytes = load(captureFrame("in.pcap", wrap(ethernet, mediaPort, rtpPacket(1, 40))).filename());
    const std::size_t originalLength = 24 + 12;
    ++bytes[originalLength];
    const auto trimmed = openSource(store("in.pcap", bytes), mediaPort);
    EXPECT_TRUE(readAll(*trimmed).empty());
    EXPECT_EQ(trimmed->cutDatagrams(), 1u);
}

TEST_F(CaptureTest, DeliversWhatStandsBeforeABrokenPlace) {
    for (const char* name : {"in.pcap", "in.pcapng"}) {
        Bytes bytes = load(capture(name, ethernet, 3).filename());
        bytes.erase(bytes.end() - 7, bytes.end());
        const auto source = openSource(store(name, bytes), mediaPort);
        Datagram datagram;
        EXPECT_TRUE(source->read(datagram));
        EXPECT_TRUE(source->read(datagram));
        const std::string error = errorOf([&] { source->read(datagram); });
        EXPECT_EQ(error.find(name + std::string(": trunc")), 0u) << error;
    }
}

TEST_F(CaptureTest, NamesTheFileThatCannotBeRead) {
    const auto errorOfFile = [](const std::filesystem::path& path) {
        return errorOf([&] { openSource(path, mediaPort); });
    };
    EXPECT_EQ(errorOfFile(pathOf("none.pcap")), "none.pcap: cannot open: No such file or directory");
    EXPECT_EQ(errorOfFile(store("empty.pcapng", {})), "empty.pcapng: the file is empty");
    EXPECT_EQ(errorOfFile(store("text.pcap", Bytes(99, 'x'))),
              "text.pcap: not a readable capture: unknown file format");
    EXPECT_EQ(errorOfFile(store("a.mp4", {1})), "a.mp4: the name must end in .ts, .pcap or .pcapng");
    std::filesystem::create_directory(pathOf("folder.pcap"));
    EXPECT_EQ(errorOfFile(pathOf("folder.pcap")), "folder.pcap: cannot read: Is a directory");

    Bytes wireless = load(capture("wireless.pcap", ethernet, 1).filename());
    wireless[20] = 105;
    EXPECT_EQ(errorOfFile(store("wireless.pcap", wireless)),
              "wireless.pcap: captures of link type IEEE802_11 are not supported");
}

TEST_F(CaptureTest, ReadsFromAPipe) {
    const Bytes bytes = load(capture("in.pcapng", ethernet, 3).filename());
    const auto path = pathOf("pipe.pcapng");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::thread writer([&] { store("pipe.pcapng", bytes); });
    const auto source = openSource(path, mediaPort);
    EXPECT_EQ(readAll(*source).size(), 3u);
    writer.join();
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
