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
    /// Reads until the end or an error, which `error_` then is.
    std::vector<Datagram> read(const Bytes& bytes) {
        std::vector<Datagram> all;
        error_ = errorOf([&] {
            const auto source = openSource(store("in.ts", bytes), mediaPort);
            for (Datagram datagram; source->read(datagram);) all.push_back(datagram);
        });
        return all;
    }

    std::string error_;
};

ConstRtpPacketView rtp(const Datagram& datagram) {
    return {datagram.payload.data(), static_cast<std::uint16_t>(datagram.payload.size())};
}

std::uint32_t timestampOf(std::uint64_t ticks) {
    return static_cast<std::uint32_t>(ticks % pcrModulus / 300);
}

/// The datagram stands `elapsed` ticks behind the first, where the stream's clock shows `clock`.
void expectTimes(const Datagram& datagram, std::uint64_t elapsed, std::uint64_t clock) {
    EXPECT_EQ(datagram.time, std::chrono::nanoseconds(elapsed * 1000 / 27)) << elapsed;
    EXPECT_EQ(rtp(datagram).timestamp(), timestampOf(clock)) << elapsed;
}

TEST_F(TsTest, PacksSevenToAnRtpPacketAndRunsEvenlyWithoutAClock) {
    const std::uint64_t ticksPerDatagram = 7 * 150 * 27;
    const std::vector<Datagram> all = read(StreamBuilder().packets(69'995).bytes());
    ASSERT_EQ(all.size(), 10'000u);
    for (std::size_t i = 0; i < all.size(); ++i) {
        ASSERT_TRUE(rtp(all[i]).isValid());
        ASSERT_EQ(rtp(all[i]).payloadType(), mediaPayloadType);
        ASSERT_EQ(rtp(all[i]).sequenceNumber(), i);
        ASSERT_NE(rtp(all[i]).ssrc(), 0u);
        ASSERT_EQ(all[i].payload.size(), 12u + 188u * (i < 9999 ? 7 : 2));
        ASSERT_TRUE(all[i].frame.empty());
    }
    expectTimes(all[9000], 9000 * ticksPerDatagram, 9000 * ticksPerDatagram);
}

TEST_F(TsTest, ReckonsTheClockExactlyAcrossItsWrap) {
    const std::uint64_t start = pcrModulus - 120'000;
    StreamBuilder stream;
    stream.packets(5);
    for (std::uint64_t i = 0; i < 20; ++i) stream.clock(start + 5000 + i * 13'000).packets(12);
    const std::vector<Datagram> all = read(stream.bytes());
    ASSERT_EQ(all.size(), 38u);
    for (std::size_t i = 0; i < all.size(); ++i) expectTimes(all[i], i * 7000, start + i * 7000);
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
        const std::vector<Datagram> all = read(stream.bytes());
        ASSERT_EQ(all.size(), 10u);
        for (std::size_t i = 0; i < all.size(); ++i)
            expectTimes(all[i], i * 7000, i < 5 ? oldBase + i * 7000 : c.newBase + (i - 5) * 7000);
    }
}

TEST_F(TsTest, FollowsOneClockUntilItFallsSilent) {
    StreamBuilder stream;
    for (std::uint64_t i = 0; i < 10; ++i)
        stream.clock(i * 10'000, 1).packets(4).clock(5'000'000, 2).packets(4);
    std::vector<Datagram> all = read(stream.bytes());
    EXPECT_EQ(rtp(all.back()).timestamp(), timestampOf(98'000));

    const std::uint64_t newClock = 20'500'000;
    stream.packets(20'004).clock(newClock, 2).packets(6);
    all = read(stream.bytes());
    EXPECT_EQ(rtp(all.back()).timestamp(), timestampOf(newClock));
    for (std::size_t i = 1; i < all.size(); ++i)
        ASSERT_LT(rtp(all[i - 1]).timestamp(), rtp(all[i]).timestamp()) << i;
}

TEST_F(TsTest, DeliversWhatStandsBeforeABrokenPlace) {
    struct Case {
        std::size_t packets;
        Bytes tail;
        const char* error;
    };
    for (const Case& c :
         {Case{0, {}, "in.ts: the file is empty"},
          Case{0, Bytes(99, 'x'), "in.ts: not a transport stream: no sync byte 0x47 at its start"},
          Case{0, {tsSyncByte}, "in.ts: truncated: the packet at byte 0 has 1 of 188 bytes"},
          Case{9, Bytes(187, tsSyncByte), "in.ts: truncated: the packet at byte 1692 has 187 of 188 bytes"},
          Case{9, Bytes(188), "in.ts: no sync byte 0x47 at byte 1692, where a packet should start"}}) {
        Bytes bytes = StreamBuilder().packets(c.packets).bytes();
        bytes.insert(bytes.end(), c.tail.begin(), c.tail.end());
        std::size_t delivered = 0;
        for (const Datagram& datagram : read(bytes)) delivered += (datagram.payload.size() - 12) / 188;
        EXPECT_EQ(delivered, c.packets) << c.error;
        EXPECT_EQ(error_, c.error);
    }
}

TEST_F(TsTest, HasNoPlaceForFec) {
    EXPECT_EQ(errorOf([&] {
                  const auto sink = openSink(pathOf("out.ts"), mediaPort,
                                             std::make_shared<FrameTemplate>(LinkType::ethernet));
                  sink->write({StreamPort::fecA, {}, Bytes(40), {}});
              }),
              "out.ts: a transport stream cannot hold FEC packets; write a .pcap or .pcapng");
}

}  // namespace
}  // namespace mvrtpfec
