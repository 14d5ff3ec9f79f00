#include <algorithm>
#include <array>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "core/fec_composer.h"
#include "core/fec_packet.h"
#include "guard/control_packets.h"
#include "guard/packet_ledger.h"
#include "host/graph/sent_numbers.h"
#include "host/live/delay_line.h"
#include "host/live/file_media_input.h"
#include "host/live/input_watch.h"
#include "host/live/pacer.h"
#include "host/live/reception_log.h"
#include "host/live/reception_meter.h"
#include "host/live/stream_endpoints.h"
#include "host/live/ts_wrapper.h"
#include "host/net/own_address.h"
#include "host/stages/repair_chain.h"
#include "host/usage_error.h"
#include "tests/host/io_test_frames.h"
#include "tests/host/program_run.h"
#include "tests/host/udp_listeners.h"

namespace mvrtpfec {
namespace {

using namespace std::chrono_literals;

class LiveTest : public ProgramTest {
protected:
    LiveTest() { store("in.ts", sample()); }
};

/// A packet of the given number and timestamp.
std::unique_ptr<RtpPacket> media(std::uint16_t number, std::uint32_t timestamp, std::uint32_t ssrc = 1) {
    Bytes bytes = rtpPacket(number, 200);
    writeBigEndian32(&bytes[4], timestamp);
    writeBigEndian32(&bytes[8], ssrc);
    return std::make_unique<RtpPacket>(bytes.data(), bytes.size());
}

TEST(ReceptionMeterTest, CountsWhatComesAndMeasuresLatency) {
    auto meter = std::make_unique<ReceptionMeter>();
    const SteadyTime now = SteadyTime{} + 1h;
    EXPECT_TRUE(meter->arrive(media(20'001, 0)->view, now));
    // A report, and RTP of a payload type that might be FEC's: a picture.
    Bytes other(60, 0x47);
    other[0] = 0x80;
    for (const std::uint8_t type : {std::uint8_t{200}, fecPayloadType}) {
        other[1] = type;
        EXPECT_FALSE(meter->arrive(viewOf(other), now));
    }
    EXPECT_EQ(meter->figures().media, 1U);
    EXPECT_EQ(meter->figures().foreign, 2U);
    EXPECT_EQ(meter->figures().foreignPayloadType, fecPayloadType);
    EXPECT_EQ(matrixText(meter->figures().fec), "no FEC yet");
    meter->deliver(media(20'001, 0)->view, now + 40ms);
    meter->deliver(media(19'999, 0)->view, now + 90ms);  // rebuilt, it never arrived
    EXPECT_EQ(meter->takeLatency(), 40ms);
    EXPECT_EQ(meter->takeLatency(), 0ms);
}

/// A stream of packets 90 ticks long each, and what its ledger says at the end.
struct Ledger {
    /// Rebuilt, lost for good, longest burst, outages, restarts.
    using Account = std::array<std::uint64_t, 5>;

    static std::unique_ptr<RtpPacket> packet(std::uint32_t index, std::uint32_t ssrc = 1,
                                             std::uint32_t jump = 0) {
        return media(static_cast<std::uint16_t>(index + jump), index * 90, ssrc);
    }
    void come(std::uint32_t index) { came = ledger.arrive(packet(index)->view); }
    void goOut(std::uint32_t index) { ledger.deliver(packet(index)->view, came); }
    void run(std::uint32_t from, std::uint32_t to, std::uint32_t ssrc = 1, std::uint32_t jump = 0) {
        for (; from < to; ++from) {
            came = ledger.arrive(packet(from, ssrc, jump)->view);
            ledger.deliver(packet(from, ssrc, jump)->view, came);
        }
    }
    void nameRow(std::uint16_t base, std::uint8_t count) {
        const auto fec = makeTeacher(FecKind::row, {.columns = count}, base);
        writeBigEndian32(fec->view.data + 4, (65'536U + base) * 90);
        ledger.name(fec->view);
    }
    Account end() {
        ledger.finish();
        const LedgerFigures f = ledger.figures();
        EXPECT_EQ(f.lost(), f.rebuilt + f.lostForGood);
        return {f.rebuilt, f.lostForGood, f.longestBurst, f.outages, f.restarts};
    }

    PacketLedger ledger{0};
    std::uint64_t came = 0;
};

TEST(PacketLedgerTest, TellsLossesFromRestartsAndJumps) {
    const auto after = [](const std::function<void(Ledger&)>& story) {
        Ledger stream;
        stream.run(65'000, 66'000);
        story(stream);
        return stream.end();
    };
    using Account = Ledger::Account;
    EXPECT_EQ(after([](Ledger&) {}), Account());
    EXPECT_EQ(after([](Ledger& s) { s.come(66'002), s.goOut(66'000), s.goOut(66'002); }), (Account{1, 1, 2}));
    EXPECT_EQ(after([](Ledger& s) { s.come(66'001), s.goOut(66'000), s.come(66'000), s.goOut(66'001); }),
              (Account{1, 0, 1}))
        << "it came too late";
    EXPECT_EQ(after([](Ledger& s) { s.come(66'000), s.run(66'001, 66'010); }), (Account{0, 1, 1}))
        << "held back";
    EXPECT_EQ(after([](Ledger& s) { s.run(68'000, 68'100); }), (Account{0, 2000, 2000, 1}));
    EXPECT_EQ(after([](Ledger& s) { s.run(166'000, 166'100); }), (Account{0, 100'000, 100'000, 1}))
        << "more than a cycle of numbers";
    EXPECT_EQ(after([](Ledger& s) { s.run(66'800, 66'900, 1, 1200); }), (Account{0, 2000, 2000, 1}))
        << "timestamps set anew meanwhile";
    EXPECT_EQ(after([](Ledger& s) { s.run(66'000, 66'100, 1, 2000); }), (Account{0, 0, 0, 0, 1})) << "a jump";
    EXPECT_EQ(after([](Ledger& s) { s.run(66'500, 66'600, 2); }), (Account{0, 0, 0, 0, 1}))
        << "another source";
    EXPECT_EQ(after([](Ledger& s) { s.run(70'000, 70'001), s.run(66'000, 66'100); }), Account()) << "a stray";
    EXPECT_EQ(after([](Ledger& s) { s.run(66'000, 66'100), s.run(66'050, 66'100); }), Account())
        << "repeated";
    EXPECT_EQ(after([](Ledger& s) { s.nameRow(66'000 % 65'536 - 2, 5); }), (Account{0, 3, 3}))
        << "the very end";
    EXPECT_EQ(after([](Ledger& s) { s.nameRow(66'000 % 65'536 - 2, 5), s.run(66'000, 66'100); }), Account());
}

/// Keeps the lines.
class Lines final : public mvn::log::ILogger {
public:
    [[gnu::format(printf, 3, 4)]] void Log(std::uint32_t level, const char* format, ...) override {
        std::array<char, 256> text{};
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(text.data(), text.size(), format, arguments);
        va_end(arguments);
        lines_.push_back(fmt::format("{} {}", level, text.data()));
    }
    std::vector<std::string> take() { return std::exchange(lines_, {}); }

private:
    std::vector<std::string> lines_;
};

TEST(ReceptionLogTest, TellsOnceAndNotTooOften) {
    using Expected = std::vector<std::string>;
    Lines lines;
    ReceptionLog log(lines);
    ReceptionTotals totals;
    SteadyTime now{};
    const auto note = [&](std::chrono::seconds passed) {
        now += passed;
        log.note(totals, now);
        return lines.take();
    };
    EXPECT_EQ(note(100s), Expected()) << "nothing has come yet";
    totals.reception.foreign = 7;
    totals.reception.foreignPayloadType = 96;
    const Expected foreign{
        "1 no media come, but 7 other datagrams (RTP of payload type 96, a transport stream has 33)"};
    EXPECT_EQ(note(1s), foreign);
    EXPECT_EQ(note(1s), Expected());
    ++totals.reception.media;
    totals.reception.fec.columns = totals.reception.fec.rows = 5;
    EXPECT_EQ(note(1s), Expected()) << "it may not be the whole matrix yet";
    EXPECT_EQ(note(0s), Expected{"2 the matrix is 5 x 5"});
    totals.repair.stream.restarts = 1;
    ++totals.reception.media;
    EXPECT_EQ(note(1s), Expected{"1 the source began anew: 1, 1 in all"});
    totals.repair.stream.restarts = 300;
    totals.reception.fec.columns = 10;
    ++totals.reception.media;
    EXPECT_EQ(note(1s), Expected());
    EXPECT_EQ(note(0s), Expected{"2 the matrix is 10 x 5, it was 5 x 5"});
    for (int i = 0; i < 8; ++i) {
        ++totals.reception.media;
        EXPECT_EQ(note(1s), Expected());
    }
    EXPECT_EQ(note(1s), Expected{"1 the source began anew: 299, 300 in all"});
    EXPECT_EQ(note(1s), Expected{"1 no media come any more"});
    EXPECT_EQ(note(30s), Expected());
    ++totals.reception.media;
    totals.repair.guard.emplace();
    totals.repair.guard->repeated = 99;
    EXPECT_EQ(note(1s), Expected{"1 media come again after 33 s"});
    totals.repair.guard->repeated = 100;
    totals.repair.stream.lostForGood = 2;
    ++totals.reception.media;
    EXPECT_EQ(note(1s), (Expected{"1 media packets were lost for good: 2, 2 in all",
                                  "1 packets came twice: 100, 100 in all"}));
}

/// Time passes when it is slept, and a little more each time; now and then the machine stops.
class SimulatedClock final : public Clock {
public:
    SteadyTime now() override { return now_; }
    void sleepUntil(SteadyTime time) override {
        now_ = std::max(now_, time) + std::chrono::microseconds(++sleeps_ % 200);
        if (sleeps_ % 500'000 == 0) now_ += 700ms;
    }

private:
    SteadyTime now_{24h};
    std::int64_t sleeps_ = 0;
};

TEST_F(LiveTest, AnHourIsPacedEvenly) {
    constexpr std::uint64_t rate = 5'000'000;
    for (const auto& bitRate : {std::optional<std::uint64_t>(), std::optional(rate)}) {
        SimulatedClock clock;
        FileMediaInput input(pathOf("in.ts"), {.bitRate = bitRate, .loop = true, .receiving = {}}, clock);
        Pacer pacer(clock);
        const SteadyTime start = clock.now();
        DuePacket next;
        std::uint64_t packets = 0;
        std::uint64_t bits = 0;
        std::uint64_t late = 0;
        std::int32_t ticks = 0;
        std::uint32_t timestamp = 0;
        SteadyTime due;
        do {
            ASSERT_EQ(input.read(next), MediaInput::Got::packet);
            ASSERT_TRUE(pacer.waitUntil(*next.due));
            ASSERT_GE(clock.now(), *next.due);
            if (clock.now() - *next.due > 1ms) ++late;
            if (packets > 0) {
                ticks = static_cast<std::int32_t>(next.packet->view.timestamp() - timestamp);
                const std::chrono::duration<double, std::milli> step = *next.due - due;
                ASSERT_NEAR(ticks / 90.0, step.count(), 0.1);
            }
            timestamp = next.packet->view.timestamp();
            due = *next.due;
            ++packets;
            bits += 8 * (next.packet->view.length - rtpHeaderSize);
        } while (clock.now() - start < 1h);
        // One packet in a hundred thousand waits out a stop of the machine.
        EXPECT_LT(late, packets / 1000);
        EXPECT_LT(clock.now() - due, 2ms);
        if (bitRate) {
            EXPECT_NEAR(static_cast<double>(bits) / 3600, rate, rate * 1e-5);
        }
    }
}

TEST(SentNumbersTest, AgreeWithFecPacketsOverWhatTheyName) {
    std::map<std::uint16_t, Bytes> sent;
    SentNumbers numbers;
    std::size_t right = 0;
    std::size_t wrong = 0;
    CFecComposer composer(
        [&](const std::shared_ptr<RtpPacket>& fec) {
            const ProtectedRange range = protectedRange(fec->view);
            Bytes parity(fec->view.payload(), fec->view.payload() + 50);
            for (unsigned i = 0; i < range.count; ++i) {
                const Bytes& member = sent[static_cast<std::uint16_t>(range.base + i * range.offset)];
                for (std::size_t at = 0; at < member.size() && at < 50; ++at) parity[at] ^= member[at];
            }
            const bool isRight = std::ranges::count(parity, 0) == 50;
            EXPECT_EQ(numbers.agree(fec->view), isRight) << range.base << " by " << int{range.offset};
            ++(isRight ? right : wrong);
        },
        fecBoth, 5, 4);
    std::uint16_t number = 65000;
    for (std::uint32_t i = 0; i < 2000; ++i) {
        ++number;
        if (i % 37 == 5) number = static_cast<std::uint16_t>(number + 2);
        if (i % 53 == 7) --number;
        Bytes packet = rtpPacket(number, 62);
        // A packet that comes twice is the same both times.
        for (std::size_t at = 12; at < 62; ++at)
            packet[at] = static_cast<std::uint8_t>((number * 2654435761U) >> (at % 24));
        sent[number] = Bytes(packet.begin() + 12, packet.end());
        numbers.note(viewOf(packet));
        composer.protect(viewOf(packet));
    }
    EXPECT_GT(right, 200U);
    EXPECT_GT(wrong, 50U);
}

/// Sends to an input and gives back what it makes of it.
class UdpInput {
public:
    UdpInput(const std::string& scheme, std::uint16_t port)
        : input_(openMediaInput(fmt::format("{}://127.0.0.1:{}", scheme, port), {})),
          socket_(context_, asio::ip::udp::v4()),
          to_(asio::ip::address_v4::loopback(), port) {}

    void send(const Bytes& bytes) { socket_.send_to(asio::buffer(bytes), to_); }
    bool read(DuePacket& next) { return input_->read(next) == MediaInput::Got::packet; }
    std::string notice() {
        const auto notices = input_->takeNotices();
        EXPECT_LE(notices.size(), 1U);
        return notices.empty() ? "" : notices[0];
    }

private:
    std::unique_ptr<MediaInput> input_;
    asio::io_context context_;
    asio::ip::udp::socket socket_;
    asio::ip::udp::endpoint to_;
};

TEST_F(LiveTest, ABareStreamComesInDatagramsOfAnySize) {
    const Bytes all = sample();
    const std::uint16_t port = UdpListeners(1).firstPort();
    for (const std::size_t size : {1472U, 1316U, 188U, 100U, 8U * 188, 65'507U}) {
        UdpInput input("udp", port);
        Bytes out;
        DuePacket next;
        for (std::size_t at = 0; at < all.size() / 3; at += size) {
            input.send(Bytes(all.begin() + static_cast<std::ptrdiff_t>(at),
                             all.begin() + static_cast<std::ptrdiff_t>(at + size)));
            while (out.size() + 8 * 188 < at && input.read(next)) {
                out.insert(out.end(), next.packet->view.payload(),
                           next.packet->view.data + next.packet->view.length);
            }
        }
        ASSERT_GT(out.size(), all.size() / 4) << size;
        EXPECT_TRUE(std::equal(out.begin(), out.end(), all.begin())) << size;
        EXPECT_EQ(input.notice(), "") << size;
    }
}

TEST_F(LiveTest, InputThatCannotBeUsedIsToldWithinTwoSeconds) {
    const Bytes all = sample();
    const Bytes bare(all.begin(), all.begin() + 7 * 188);
    Bytes rtp = rtpPacket(1, 12);
    rtp.insert(rtp.end(), bare.begin(), bare.end());
    Bytes other = rtp;
    other[1] = 96;
    struct Case {
        const char* scheme;
        Bytes datagram;
        const char* told;
    };
    const std::vector<Case> cases{{"udp", {}, "nothing has come yet"},
                                  {"udp", rtp, "rtp://"},
                                  {"udp", Bytes(1472, 'G' + 1), "no transport stream"},
                                  {"udp", Bytes(10, 'G'), "no transport stream"},
                                  {"rtp", bare, "udp://"},
                                  {"rtp", other, "payload type is 96"}};
    const std::uint16_t port = UdpListeners(6).firstPort();
    std::vector<std::unique_ptr<UdpInput>> inputs;
    for (const Case& c : cases)
        inputs.push_back(
            std::make_unique<UdpInput>(c.scheme, static_cast<std::uint16_t>(port + inputs.size())));
    std::vector<std::string> told(cases.size());
    const SteadyTime start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - start < 1800ms) {
        for (std::size_t i = 0; i < cases.size(); ++i) {
            if (!cases[i].datagram.empty()) inputs[i]->send(cases[i].datagram);
            DuePacket next;
            EXPECT_FALSE(inputs[i]->read(next));
            told[i] += inputs[i]->notice();
        }
    }
    for (std::size_t i = 0; i < cases.size(); ++i)
        EXPECT_NE(told[i].find(cases[i].told), std::string::npos) << told[i];
}

TEST(TsWrapperTest, NoPacketIsMadeOfTwoWhereADatagramIsMissing) {
    Bytes stream;
    for (std::uint8_t i = 0; i < 200; ++i) {
        Bytes packet(188, i | 0x80);
        packet[0] = 0x47;
        stream.insert(stream.end(), packet.begin(), packet.end());
    }
    std::size_t packets = 0;
    std::size_t shortOnes = 0;
    std::uint64_t skipped = 0;
    TsWrapper wrapper(
        1, 0, [&](std::uint64_t, std::uint64_t count) { skipped += count; },
        [&](auto packet) {
            shortOnes += packet->view.payloadLength() < 7 * 188;
            for (const std::uint8_t* at = packet->view.payload();
                 at < packet->view.data + packet->view.length; at += 188, ++packets)
                EXPECT_TRUE(at[0] == 0x47 && std::count(at + 1, at + 188, at[1]) == 187);
        });
    for (std::size_t at = 100; at + 1472 <= stream.size(); at += 1472)
        if (at / 1472 % 5 != 2) wrapper.push(std::span(stream).subspan(at, 1472), {});
    wrapper.passTime(SteadyTime{} + 1s);
    EXPECT_GT(packets, 200 * 4 / 5 - 20U);
    EXPECT_GT(skipped, 0U);
    EXPECT_EQ(shortOnes, 1U);
}

TEST(InputWatchTest, TellsTheSameAgainAfterTenSeconds) {
    SteadyTime now{};
    InputWatch watch("udp://x", now);
    std::vector<std::string> told;
    for (int i = 0; i < 150; ++i, now += 100ms) {
        watch.leaveOut("y", now);
        watch.skip(5, now);
        for (auto& notice : watch.takeNotices(now)) told.push_back(notice);
    }
    ASSERT_EQ(told.size(), 4U);
    EXPECT_EQ(told[2], "udp://x: left out 100 datagrams, 111 in all: y");
}

TEST(DelayLineTest, HoldsPacketsAsLongAsItShould) {
    std::vector<std::size_t> out;
    DelayLine line({.delay = 20, .jitter = 10},
                   [&](StreamPort, const auto& packet) { out.push_back(packet.size()); });
    const SteadyTime start{};
    for (std::size_t i = 1; i <= 100; ++i) line.push(StreamPort::media, Bytes(i), start);
    line.letOut(start + 19ms);
    EXPECT_TRUE(out.empty());
    ASSERT_TRUE(line.next());
    EXPECT_GE(*line.next(), start + 20ms);
    line.letOut(start + 25ms);
    EXPECT_GT(out.size(), 20U);
    EXPECT_LT(out.size(), 80U);
    line.letOut(start + 30ms);
    EXPECT_EQ(out.size(), 100U);
    EXPECT_FALSE(std::ranges::is_sorted(out)) << "jitter reorders";
    EXPECT_FALSE(line.next());
}

TEST_F(LiveTest, WhatIsWholeInADamagedFileLeaves) {
    Bytes cut = sample();
    cut[7 * 188] = 0;
    cut.resize(20 * 7 * 188 + 4 * 188 + 100);
    store("cut.ts", cut);
    UdpListeners listeners(6);
    const Outcome result =
        run(fmt::format("send cut.ts --to 127.0.0.1:{} --mode row --columns 5 --rows 4 --bitrate 20M",
                        listeners.firstPort()));
    EXPECT_EQ(result.status, 0);
    for (const char* told : {"cut.ts: skipped 188 bytes at byte 1316,",
                             "cut.ts: skipped 100 bytes at byte 27072,", "bytes skipped 288,"})
        EXPECT_NE(result.text.find(told), std::string::npos) << result.text;
    EXPECT_EQ(listeners.datagrams(0).size(), 21U);
    EXPECT_EQ(listeners.datagrams(2).size(), 4U);
}

TEST(OwnAddressTest, AStreamThatWouldComeBackIsFound) {
    const auto comesBack = [](const char* to, const char* from) {
        try {
            requireElsewhere(parseStream(to), parseStream(from));
        } catch (const UsageError&) {
            return true;
        }
        return false;
    };
    EXPECT_TRUE(comesBack("239.1.2.3:5004", "239.1.2.3:5000"));
    EXPECT_TRUE(comesBack("0.0.0.0:5004", "127.0.0.1:5004"));
    EXPECT_TRUE(comesBack("127.0.0.1:5004,1,2", "0.0.0.0:7,8,5004"));
    EXPECT_FALSE(comesBack("127.0.0.1:5004", "127.0.0.2:5004"));
    EXPECT_FALSE(comesBack("127.0.0.1:5004", "127.0.0.1:5005"));
    EXPECT_FALSE(comesBack("239.1.2.3:5004", "0.0.0.0:5004"));
}

TEST_F(LiveTest, RefusesWhatCannotBeMeant) {
    for (const auto& [arguments, text] :
         {std::pair{"send in.ts --to 127.0.0.1:65534 --mode both --columns 5 --rows 5", "two and four above"},
          std::pair{"send in.ts --to 127.0.0.1:5004,5006 --preset lean", "one FEC port"},
          std::pair{"send in.ts --to 127.0.0.1:5004,5006,5006 --preset lean", "are to differ"},
          std::pair{"receive --from 127.0.0.1:5004,5006,x null", "has no port"},
          std::pair{"send - --to 127.0.0.1:5004 --preset lean --loop", "only a file"},
          std::pair{"send rtp://127.0.0.1:7 --to 127.0.0.1:5004 --preset lean --bitrate 5M",
                    "its own bit rate"},
          std::pair{"receive --from 127.0.0.1:5004 - --json -", "JSON"},
          std::pair{"receive --from 127.0.0.1:5004 x.ts --json x.ts", "for two outputs"},
          std::pair{"receive --from 127.0.0.1:5004 null --stats 1h", "--stats"},
          std::pair{"send in.ts --to 300.0.0.1:5004 --mode both --columns 5 --rows 5", "has no address"},
          std::pair{"send in.ts --to 127.0.0.1:5004 --mode both --columns 5 --rows 5 --bitrate 5x",
                    "bit rate"},
          std::pair{"receive --from 239.1.1.1:5004 null --interface none77", "no such network interface"},
          std::pair{"receive --from 127.0.0.1:5004 null --source 10.0.0.1", "of a group alone"},
          std::pair{"receive --from 127.0.0.1:5004 out.mp4", "out.mp4: is no .ts file, udp://"},
          std::pair{"send http://x --to 127.0.0.1:5004 --preset lean", "is no udp:// or rtp:// address"},
          std::pair{"relay --from 127.0.0.1:5004 --to localhost:5006", "would come back"},
          std::pair{"send rtp://127.0.0.1:5006 --to 127.0.0.1:5004 --preset lean", "would come back"},
          std::pair{"receive --from 0.0.0.0:5004 udp://127.0.0.1:5008", "would come back"},
          std::pair{"relay --from 127.0.0.1:5004 --to 127.0.0.1:6004 --loss 2", "loss"}}) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.status, 2) << arguments << result.text;
        EXPECT_NE(result.text.find(text), std::string::npos) << result.text;
    }
    EXPECT_EQ(run("send none.ts --to 127.0.0.1:5004 --mode both --columns 5 --rows 5").status, 1);
}

}  // namespace
}  // namespace mvrtpfec
