#include <gtest/gtest.h>

#include "core/rtp_packet.h"
#include "host/io/packet_sink.h"
#include "host/io/packet_source.h"
#include "host/io/ts_packet.h"
#include "tests/host/io_test_files.h"

namespace mvrtpfec {
namespace {

constexpr std::uint16_t mediaPort = 5004;

/// A transport stream of which every packet takes 1000 ticks, written down as the test says.
class StreamBuilder {
public:
    StreamBuilder& packets(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) append({tsSyncByte, 0x01, 0x00, 0x10});
        return *this;
    }

    StreamBuilder& clock(std::uint64_t ticks, std::uint8_t pid = 0, bool startsNewTimeBase = false) {
        const std::uint64_t base = ticks % pcrModulus / 300;
        const std::uint64_t field = base << 15 | 0x3f << 9 | ticks % 300;
        Bytes head = {tsSyncByte, 0x01, pid,
                      0x20,       183,  static_cast<std::uint8_t>(startsNewTimeBase ? 0x90 : 0x10)};
        for (int shift = 40; shift >= 0; shift -= 8)
            head.push_back(static_cast<std::uint8_t>(field >> shift));
        append(head);
        return *this;
    }

    const Bytes& bytes() const { return bytes_; }

private:
    void append(Bytes packet) {
        packet.resize(tsPacketSize, static_cast<std::uint8_t>(bytes_.size() / tsPacketSize));
        bytes_.insert(bytes_.end(), packet.begin(), packet.end());
    }

    Bytes bytes_;
};

class TsTest : public FileTest {
protected:
    std::vector<Datagram> read(const StreamBuilder& stream) { return read(store("in.ts", stream.bytes())); }

    static std::vector<Datagram> read(const std::filesystem::path& path) {
        const auto source = openSource(path, mediaPort);
        std::vector<Datagram> all;
        for (Datagram datagram; source->read(datagram);) all.push_back(datagram);
        return all;
    }
};

ConstRtpPacketView rtp(const Datagram& datagram) {
    return {datagram.payload.data(), static_cast<std::uint16_t>(datagram.payload.size())};
}

std::uint32_t timestampOf(std::uint64_t ticks) {
    return static_cast<std::uint32_t>(ticks % pcrModulus / 300);
}

std::chrono::nanoseconds durationOf(std::uint64_t ticks) {
    return std::chrono::nanoseconds(ticks * 1000 / 27);
}

TEST_F(TsTest, PacksSevenToAnRtpPacket) {
    const std::vector<Datagram> all = read(StreamBuilder().packets(16));
    ASSERT_EQ(all.size(), 3u);
    for (std::uint16_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(rtp(all[i]).isValid());
        EXPECT_EQ(rtp(all[i]).payloadType(), mediaPayloadType);
        EXPECT_EQ(rtp(all[i]).sequenceNumber(), i);
        EXPECT_NE(rtp(all[i]).ssrc(), 0u);
        EXPECT_EQ(all[i].payload.size(), 12u + 188u * (i < 2 ? 7 : 2));
        EXPECT_TRUE(all[i].frame.empty());
    }
}

TEST_F(TsTest, ComesBackWholeFromACapture) {
    StreamBuilder stream;
    for (std::uint64_t i = 0; i < 40; ++i) stream.clock(i * 25'000).packets(24);
    const auto copy = [&](const std::string& from, const std::string& to) {
        const auto source = openSource(pathOf(from), mediaPort);
        const auto sink = openSink(pathOf(to), mediaPort, source->addressing());
        for (Datagram datagram; source->read(datagram);) sink->write(datagram);
        sink->finish();
    };
    store("in.ts", stream.bytes());
    for (const std::string capture : {"a.pcap", "a.pcapng"}) {
        copy("in.ts", capture);
        copy(capture, "out.ts");
        EXPECT_EQ(load("out.ts"), stream.bytes());
    }
}

TEST_F(TsTest, ReckonsTheClockExactlyAcrossItsWrap) {
    const std::uint64_t start = pcrModulus - 120'000;
    StreamBuilder stream;
    stream.packets(5);
    for (std::uint64_t i = 0; i < 20; ++i) stream.clock(start + 5000 + i * 13'000).packets(12);
    const std::vector<Datagram> all = read(stream);
    ASSERT_EQ(all.size(), 38u);
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(rtp(all[i]).timestamp(), timestampOf(start + i * 7000)) << i;
        EXPECT_EQ(all[i].time, durationOf(i * 7000)) << i;
    }
}

TEST_F(TsTest, TakesANewTimeBaseWhileTimeRunsOn) {
    struct Case {
        const char* name;
        std::uint64_t newBase;
        bool isMarked;
    };
    const std::uint64_t oldBase = 90'000'000;
    for (const Case& c : {Case{"marked", oldBase + 50'000, true}, Case{"back", 1'000'000, false},
                          Case{"more than a second ahead", oldBase + 20'000 + pcrFrequency + 1, false},
                          Case{"standing still", oldBase + 20'000, false}}) {
        SCOPED_TRACE(c.name);
        StreamBuilder stream;
        stream.clock(oldBase).packets(19).clock(oldBase + 20'000).packets(14);
        stream.clock(c.newBase, 0, c.isMarked).packets(19).clock(c.newBase + 20'000).packets(14);
        const std::vector<Datagram> all = read(stream);
        ASSERT_EQ(all.size(), 10u);
        for (std::size_t i = 0; i < all.size(); ++i) {
            const std::uint64_t expected = i < 5 ? oldBase + i * 7000 : c.newBase + (i - 5) * 7000;
            EXPECT_EQ(rtp(all[i]).timestamp(), timestampOf(expected)) << i;
            EXPECT_EQ(all[i].time, durationOf(i * 7000)) << i;
        }
    }
}

TEST_F(TsTest, FollowsOneClockUntilItFallsSilent) {
    StreamBuilder stream;
    for (std::uint64_t i = 0; i < 10; ++i)
        stream.clock(i * 10'000, 1).packets(4).clock(5'000'000, 2).packets(4);
    std::vector<Datagram> all = read(stream);
    EXPECT_EQ(rtp(all.back()).timestamp(), timestampOf(98'000));

    const std::uint64_t newClock = 20'500'000;
    stream.packets(20'004).clock(newClock, 2).packets(6);
    all = read(stream);
    EXPECT_EQ(rtp(all.back()).timestamp(), timestampOf(newClock));
    for (std::size_t i = 1; i < all.size(); ++i)
        ASSERT_LT(rtp(all[i - 1]).timestamp(), rtp(all[i]).timestamp()) << i;
}

TEST_F(TsTest, RunsEvenlyWithoutAClock) {
    const std::vector<Datagram> all = read(StreamBuilder().packets(70'000));
    ASSERT_EQ(all.size(), 10'000u);
    EXPECT_EQ(all[9000].time, std::chrono::microseconds(9000 * 7 * 150));
    EXPECT_EQ(rtp(all[9000]).timestamp(), 9000u * 7 * 27 / 2);
}

TEST_F(TsTest, RefusesWhatIsNoWholeTransportStream) {
    const auto errorAfter = [&](std::size_t packets, const Bytes& tail) {
        Bytes bytes = StreamBuilder().packets(packets).bytes();
        bytes.insert(bytes.end(), tail.begin(), tail.end());
        const auto path = store("in.ts", bytes);
        return errorOf([&] { read(path); });
    };
    EXPECT_EQ(errorAfter(0, {}), "in.ts: the file is empty");
    EXPECT_EQ(errorAfter(0, Bytes(99, 'x')), "in.ts: not a transport stream: no sync byte 0x47 at its start");
    EXPECT_EQ(errorAfter(0, {tsSyncByte}), "in.ts: truncated: the packet at byte 0 has 1 of 188 bytes");
    EXPECT_EQ(errorAfter(9, Bytes(187, tsSyncByte)),
              "in.ts: truncated: the packet at byte 1692 has 187 of 188 bytes");
    EXPECT_EQ(errorAfter(9, Bytes(188)),
              "in.ts: no sync byte 0x47 at byte 1692, where a packet should start");
}

TEST_F(TsTest, DeliversWhatStandsBeforeABrokenPlace) {
    Bytes bytes = StreamBuilder().packets(20).bytes();
    bytes.pop_back();
    const auto source = openSource(store("in.ts", bytes), mediaPort);
    Datagram datagram;
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(source->read(datagram));
    EXPECT_EQ(datagram.payload.size(), 12u + 188u * 5);
    EXPECT_THROW(source->read(datagram), FileError);
}

TEST_F(TsTest, HasNoPlaceForFec) {
    const auto sink =
        openSink(pathOf("out.ts"), mediaPort, std::make_shared<FrameTemplate>(LinkType::ethernet));
    EXPECT_EQ(errorOf([&] {
                  sink->write({StreamPort::fecA, {}, Bytes(40), {}});
              }),
              "out.ts: a transport stream cannot hold FEC packets; write a .pcap or .pcapng");
    std::filesystem::create_symlink("/dev/full", pathOf("full.ts"));
    const auto full =
        openSink(pathOf("full.ts"), mediaPort, std::make_shared<FrameTemplate>(LinkType::ethernet));
    full->write({StreamPort::media, {}, Bytes(40), {}});
    EXPECT_EQ(errorOf([&] { full->finish(); }), "full.ts: cannot write: No space left on device");
}

}  // namespace
}  // namespace mvrtpfec
