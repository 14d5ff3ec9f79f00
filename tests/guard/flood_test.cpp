#include <gtest/gtest.h>

#include "tests/guard/stream_run.h"

namespace mvrtpfec::testing {
namespace {

constexpr Matrix matrix{5, 5};
constexpr int flowsAgainAfter = 128 + 2 * 5 * 5;

/// A guarded stream that something gets mixed into; the stream itself must come out whole.
class MixedStream : public ::testing::Test {
protected:
    /// Puts `make()` before every packet that arrives while `packets` are sent.
    template <class Make>
    void sendMixedWith(Make make, int packets) {
        run_.setTap([this, make](const WirePacket&) mutable {
            const Bytes bytes = make();
            ++mixedIn_;
            run_.inject(ReceiverInput::media, bytes);
        });
        run_.send(packets);
        run_.setTap({});
    }
    void expectWhole() {
        run_.finish();
        EXPECT_EQ(run_.residual(), 0);
        run_.expectFaithful();
        EXPECT_LE(run_.delivery().longestSilence, flowsAgainAfter);
    }
    GuardFigures figures() { return run_.chain().figures(); }

    StreamRun run_{ReceiverChain::Mode::guarded, matrix, {20000, 200}};
    Random random_{7};
    std::uint64_t mixedIn_ = 0;
};

TEST_F(MixedStream, EachPacketFiftyTimes) {
    constexpr int repeats = 49;
    std::uint64_t repeated = 0;
    run_.setTap([&](const WirePacket& packet) {
        for (int i = 0; i < repeats; ++i, ++repeated) run_.inject(packet.port, packet.bytes);
    });
    run_.send(3000);
    run_.setTap({});
    expectWhole();
    EXPECT_EQ(figures().repeated, repeated);
    EXPECT_EQ(figures().restarts, 0u);
}

TEST_F(MixedStream, BlockReplayed) {
    constexpr int block = 500;
    std::vector<WirePacket> replay;
    run_.send(1000);
    for (int i = 0; i < 3; ++i) {
        replay.clear();
        run_.setTap([&](const WirePacket& packet) { replay.push_back(packet); });
        run_.send(block);
        run_.setTap({});
        for (const WirePacket& packet : replay) run_.inject(packet.port, packet.bytes);
    }
    run_.send(1000);
    expectWhole();
    EXPECT_GE(figures().repeated, 3u * block);
    EXPECT_EQ(figures().restarts, 0u);
}

TEST_F(MixedStream, RuntsAndForeignPackets) {
    sendMixedWith(
        [&] {
            Bytes bytes(random_.below(28));
            for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random_.bits());
            if (!bytes.empty() && random_.chance(0.5)) bytes[0] = versionTwo;
            if (bytes.size() > 1) bytes[1] = random_.chance(0.5) ? fecPayloadType : bytes[1] & 0x1f;
            return bytes;
        },
        3000);
    expectWhole();
    EXPECT_EQ(figures().foreign, mixedIn_);
}

TEST_F(MixedStream, StrayPacketsOfOtherSources) {
    sendMixedWith(
        [&] {
            Bytes bytes = randomMediaPacket(random_, static_cast<std::uint16_t>(random_.bits()), 200);
            writeBigEndian32(&bytes[8], static_cast<std::uint32_t>(random_.bits()));
            return bytes;
        },
        3000);
    // Of those that fall among the numbers under way nothing but the SSRC tells, and that is enough.
    EXPECT_GE(figures().foreign + 1, mixedIn_) << "one more may still wait for a follower";
    EXPECT_EQ(figures().restarts, 0u);
    expectWhole();
}

class HostileFec : public MixedStream {
protected:
    Bytes makeFec() {
        constexpr std::uint8_t sides[] = {0, 1, 5, 20, 255};
        Bytes bytes(fecPayloadOffset + random_.below(1600));
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random_.bits());
        bytes[0] = versionTwo | (bytes[0] & paddingBit);
        bytes[1] = fecPayloadType | (bytes[1] & markerBit);
        if (random_.chance(0.7))
            writeBigEndian16(&bytes[fec_header::snBase],
                             static_cast<std::uint16_t>(run_.nextNumber() + random_.below(60) - 30));
        if (random_.chance(0.3)) writeBigEndian16(&bytes[fec_header::lengthRecovery], 65535);
        if (random_.chance(0.8)) bytes[fec_header::offset] = sides[random_.below(5)];
        if (random_.chance(0.8)) bytes[fec_header::protectedCount] = sides[random_.below(5)];
        return bytes;
    }
};

// Each one that contradicts the matrix costs a decoder; it releases its packets, and the next one
// hears the matrix from the next true FEC packet.
TEST_F(HostileFec, NowAndThen) {
    for (int i = 0; i < 100; ++i) {
        run_.inject(ReceiverInput::columnFec, makeFec());
        run_.send(97);
    }
    EXPECT_GT(figures().fecKeptBack, 0u);
    EXPECT_GT(run_.chain().decodersReplaced(), 0);
    expectWhole();
}

TEST_F(HostileFec, MoreThanAllElse) {
    sendMixedWith([&] { return makeFec(); }, 5000);
    expectWhole();
}

}  // namespace
}  // namespace mvrtpfec::testing
