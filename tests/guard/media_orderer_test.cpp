#include "guard/media_orderer.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/shared/packets.h"

namespace mvrtpfec {
namespace {

/// Writes what comes out as numbers, with `~` before one behind a hole and `!` for a restart.
class MediaOrdererTest : public ::testing::Test {
protected:
    static constexpr std::size_t window = 4;

    void push(std::initializer_list<int> numbers, std::uint32_t ssrc = 1, std::uint32_t run = 0) {
        for (const int number : numbers) {
            Bytes bytes = mediaPacket(static_cast<std::uint16_t>(number));
            writeBigEndian32(&bytes[4], run + static_cast<std::uint32_t>(number) * 300);
            writeBigEndian32(&bytes[8], ssrc);
            orderer_.push(std::make_unique<RtpPacket>(bytes.data(), bytes.size()));
        }
    }
    void start(std::initializer_list<int> numbers) {
        push(numbers);
        orderer_.begin();
    }
    std::string out() { return std::exchange(out_, {}); }

    std::string out_;
    MediaOrderer orderer_{window,
                          8,
                          {[this](std::unique_ptr<RtpPacket> packet, bool afterHole) {
                               out_ +=
                                   (afterHole ? " ~" : " ") + std::to_string(packet->view.sequenceNumber());
                           },
                           [this] { out_ += " !"; }}};
};

TEST_F(MediaOrdererTest, BeginsWithTheEarliestOfTheFirstPackets) {
    start({101, 100, 103, 102});
    EXPECT_EQ(out(), " 100 101 102 103");
}

TEST_F(MediaOrdererTest, BeginsAcrossTheWrap) {
    start({0, 65534, 1, 65535});
    EXPECT_EQ(out(), " 65534 65535 0 1");
}

TEST_F(MediaOrdererTest, BeginsByItselfAfterTheStartHold) {
    push({1, 2, 3, 4, 5, 6, 7});
    EXPECT_EQ(out(), "");
    push({8});
    EXPECT_EQ(out(), " 1 2 3 4 5 6 7 8");
}

TEST_F(MediaOrdererTest, BeginsWithTheRunNotWithAStray) {
    push({40000}, 9);
    start({10, 30000, 12, 11});
    EXPECT_EQ(out(), " 10 11 12");
    EXPECT_EQ(orderer_.figures().restarts, 0u);
}

TEST_F(MediaOrdererTest, ARestartAmongTheFirstPackets) {
    start({10, 11, 12, 13, 5000, 5001, 5002});
    EXPECT_EQ(out(), " 10 11 12 13 !");
    orderer_.flush();
    EXPECT_EQ(out(), " 5000 5001 5002");
}

TEST_F(MediaOrdererTest, WaitsForAHoleUntilTheWindowHasPassed) {
    start({65533});
    push({65535, 0, 1});
    EXPECT_EQ(out(), " 65533");
    push({2});
    EXPECT_EQ(out(), " ~65535 0 1 2");
    EXPECT_EQ(orderer_.figures().holes, 1u);
}

TEST_F(MediaOrdererTest, WaitsForAHoleNoLongerThanItsPatience) {
    using namespace std::chrono_literals;
    const std::chrono::steady_clock::time_point t{};
    const auto passTime = [&](std::chrono::milliseconds ms) { orderer_.passTime(t + ms, 10ms); };
    start({100});
    passTime(0ms);
    passTime(50ms);
    push({103});
    EXPECT_EQ(out(), " 100");
    passTime(60ms);
    passTime(69ms);
    EXPECT_EQ(out(), "");
    passTime(70ms);
    EXPECT_EQ(out(), " ~103");
    push({101, 105});
    passTime(71ms);
    push({104, 107});
    EXPECT_EQ(out(), " 104 105") << "101 came too late";
    passTime(81ms);
    EXPECT_EQ(out(), "") << "it is another hole since";
    passTime(91ms);
    EXPECT_EQ(out(), " ~107");
}

TEST_F(MediaOrdererTest, TakesThePacketThatIsOvertakenByAlmostTheWindow) {
    start({10});
    push({12, 13, 14, 11});
    EXPECT_EQ(out(), " 10 11 12 13 14");
    EXPECT_EQ(orderer_.figures().holes, 0u);
}

TEST_F(MediaOrdererTest, TellsLateFromRepeated) {
    start({10});
    push({12, 13, 14, 15, 11, 12, 17, 17, 15});
    EXPECT_EQ(out(), " 10 ~12 13 14 15");
    EXPECT_EQ(orderer_.figures().late, 1u);
    EXPECT_EQ(orderer_.figures().repeated, 3u);
}

TEST_F(MediaOrdererTest, BelievesAFarJumpOnlyWhenItIsFollowed) {
    start({10});
    push({500, 11, 600, 12, 9000});
    EXPECT_EQ(out(), " 10 11 12");
    EXPECT_EQ(orderer_.figures().stray, 2u);
    push({9001, 9002});
    orderer_.begin();
    EXPECT_EQ(out(), " ! 9000 9001 9002");
    EXPECT_EQ(orderer_.figures().restarts, 1u);
}

TEST_F(MediaOrdererTest, ANewSourceReleasesWhatTheOldOneHeld) {
    start({10});
    push({12, 14});
    push({300, 301}, 2);
    orderer_.begin();
    EXPECT_EQ(out(), " 10 ~12 ~14 ! 300 301");
}

TEST_F(MediaOrdererTest, KnowsANewRunByItsTimestamps) {
    start({10, 11, 12, 13});
    out();
    push({11, 12, 13}, 1, 777);
    orderer_.begin();
    EXPECT_EQ(out(), " ! 11 12 13");
    EXPECT_EQ(orderer_.figures().repeated, 0u);
}

TEST_F(MediaOrdererTest, NumbersBeforeTheFirstAreNotLateForLong) {
    start({2000, 2001});
    push({1500, 1501});
    orderer_.begin();
    EXPECT_EQ(out(), " 2000 2001 ! 1500 1501");
}

TEST_F(MediaOrdererTest, FlushHandsOnWhatWaits) {
    push({7, 9, 12});
    orderer_.flush();
    EXPECT_EQ(out(), " 7 ~9 ~12");
}

}  // namespace
}  // namespace mvrtpfec
