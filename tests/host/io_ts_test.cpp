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
            skipped_ = source->skipped()->total();
            notices_ = source->skipped()->takeNotices();
        });
        return all;
    }

    std::string error_;
    std::uint64_t skipped_ = 0;
    std::vector<std::string> notices_;
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

/// Packets with other bytes before and behind each.
Bytes spaced(const Bytes& packets, std::size_t before, std::size_t behind) {
    Bytes all;
    for (auto at = packets.begin(); at != packets.end(); at += tsPacketSize) {
        all.insert(all.end(), before, 0xaa);
        all.insert(all.end(), at, at + tsPacketSize);
        all.insert(all.end(), behind, 0xbb);
    }
    return all;
}

Bytes changed(Bytes bytes, std::size_t at) {
    bytes[at] ^= 1;
    return bytes;
}

Bytes without(Bytes bytes, std::size_t at, std::size_t count) {
    const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    bytes.erase(from, from + static_cast<std::ptrdiff_t>(count));
    return bytes;
}

Bytes with(Bytes bytes, std::size_t at, std::size_t count) {
    bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at), count, 0xcc);
    return bytes;
}

TEST_F(TsTest, FindsThePacketsAgain) {
    const Bytes whole = StreamBuilder().packets(40).bytes();
    const Bytes prefixed = spaced(whole, 4, 0);
    const Bytes coded = spaced(whole, 0, 16);
    constexpr std::size_t none = 40;
    struct Case {
        const char* name;
        Bytes bytes;
        std::size_t missing;
        std::uint64_t skipped;
        std::uint64_t at;
    };
    for (const Case& c : {Case{"192 a packet", prefixed, none, 0, 0}, Case{"204 a packet", coded, none, 0, 0},
                          Case{"from inside", without(whole, 0, 100), 0, 88, 0},
                          Case{"192, from inside", without(prefixed, 0, 100), 0, 92, 0},
                          Case{"204, from inside", without(coded, 0, 100), 0, 104, 0},
                          Case{"a sync byte", changed(whole, 20 * 188), 20, 188, 3760},
                          Case{"a prefixed sync byte", changed(prefixed, 20 * 192 + 4), 20, 192, 3844},
                          Case{"the last sync byte but one", changed(whole, 38 * 188), 38, 188, 7144},
                          Case{"bytes lost", without(whole, 20 * 188 + 60, 50), 20, 138, 3760},
                          Case{"bytes between", with(whole, 20 * 188, 50), none, 50, 3760},
                          Case{"many bytes between", with(whole, 20 * 188, 100'000), none, 100'000, 3760},
                          Case{"an end cut off", without(whole, 7520 - 88, 88), 39, 100, 7332},
                          Case{"an end of other bytes", with(whole, 7520, 600), none, 600, 7520}}) {
        SCOPED_TRACE(c.name);
        std::vector<std::size_t> missing(1, none);
        std::size_t next = 0;
        for (const Datagram& datagram : read(c.bytes))
            for (std::size_t end = 12 + 188; end <= datagram.payload.size(); end += 188, ++next)
                for (; datagram.payload[end - 1] != next && next < none; ++next) missing.push_back(next);
        if (next < none) missing.push_back(next);
        EXPECT_EQ(missing.back(), c.missing);
        EXPECT_LE(missing.size(), 2U);
        EXPECT_EQ(skipped_, c.skipped);
        EXPECT_EQ(notices_.size(), c.skipped > 0 ? 1U : 0U);
        if (!notices_.empty()) {
            EXPECT_NE(notices_[0].find("at byte " + std::to_string(c.at) + ","), std::string::npos)
                << notices_[0];
        }
        EXPECT_EQ(error_, "no error");
    }
}

TEST_F(TsTest, TellsTheFirstPlacesOfManyOnce) {
    Bytes bytes = StreamBuilder().packets(300).bytes();
    for (std::size_t i = 5; i < 300; i += 10) bytes[i * 188] = 0;
    read(bytes);
    EXPECT_EQ(skipped_, 30U * 188);
    EXPECT_EQ(notices_.size(), 11U);
    SkippedBytes twice("in.ts");
    twice.add(7, 1);
    twice.add(7, 1);
    EXPECT_EQ(twice.takeNotices().size(), 1U);
}

TEST_F(TsTest, RefusesWhatIsNoTransportStream) {
    for (const Bytes& bytes :
         {Bytes(99, 'x'), Bytes{tsSyncByte}, Bytes(200, tsSyncByte + 1), Bytes(1'000'000)}) {
        read(bytes);
        EXPECT_EQ(error_,
                  "in.ts: not a transport stream: no sync bytes 0x47 stand 188, 192 or 204 bytes apart");
    }
    read({});
    EXPECT_EQ(error_, "in.ts: the file is empty");
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
