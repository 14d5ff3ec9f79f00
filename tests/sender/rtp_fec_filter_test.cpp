#include <atomic>

#include "mvrtpfec/rtp_media_type.h"
#include "tests/sender/sender_fixture.h"

namespace mvrtpfec {

namespace {

std::vector<Bytes> mediaPackets(unsigned count) {
    std::vector<Bytes> packets;
    for (unsigned n = 0; n < count; ++n) packets.push_back(mediaPacket(n));
    return packets;
}

struct Wiring {
    bool a = true;
    bool b = true;
};

/// Runs a sender from its creation on, on a fresh thread, and compares every byte.
void expectFec(const Matrix& matrix, const std::vector<Bytes>& media, Wiring wiring = {}) {
    std::vector<Arrival> expected;
    std::vector<Arrival> arrived;
    onFreshThread([&] { expected = expectedFec(matrix, media, wiring.a, wiring.b); });
    onFreshThread([&] {
        Sender sender;
        sender.connect(wiring.a, wiring.b);
        ASSERT_EQ(sender.configure(matrix), S_OK);
        sender.run();
        sender.feed(media);
        arrived = sender.sink().arrivals();
    });
    EXPECT_FALSE(expected.empty());
    EXPECT_TRUE(arrived == expected) << arrived.size() << " packets, expected " << expected.size()
                                     << ", mode " << matrix.mode;
}

TEST_F(SenderTest, DeliversWhatItsComposersMake) {
    for (const Matrix& matrix : {Matrix{1, 5, 4}, {1, 1, 20}, {2, 5, 4}, {2, 1, 4}, {3, 4, 4}, {3, 10, 10}})
        expectFec(matrix, mediaPackets(250));
}

TEST_F(SenderTest, PacketsThatFitNoFecPacketTakeNoPlace) {
    std::vector<Bytes> media = mediaPackets(60);
    for (const std::size_t length : {1400u, 1401u, 12u, 11u, 1u, 2048u})
        media.insert(media.begin() + 9, mediaPacket(1000, length));
    expectFec({3, 4, 4}, media);
}

TEST_F(SenderTest, AnUnconnectedOutputHoldsItsMatrixBack) {
    expectFec({3, 4, 4}, mediaPackets(200), {.a = false, .b = true});
    expectFec({3, 4, 4}, mediaPackets(200), {.a = true, .b = false});
}

TEST_F(SenderTest, ColumnFecGoesBeforeRowFec) {
    Sender sender;
    sender.connect();
    ASSERT_EQ(sender.configure({3, 4, 4}), S_OK);
    sender.run();
    sender.feed(mediaPackets(19));
    const std::size_t before = sender.sink().arrivals().size();
    sender.feed(mediaPacket(19));
    const std::vector<Arrival> arrivals = sender.sink().arrivals();
    ASSERT_EQ(arrivals.size(), before + 2);
    EXPECT_EQ(arrivals[before].pin, 0);
    EXPECT_EQ(arrivals[before + 1].pin, 1);
}

TEST_F(SenderTest, ConfigurationIsTakenInRangeAndWhileStopped) {
    Sender sender;
    IFECoverRTPConfig& config = sender.config();
    for (const std::int32_t columns : {-1, 21}) EXPECT_EQ(config.SetColumns(columns), E_FAIL);
    for (const std::int32_t rows : {-4, 3, 21}) EXPECT_EQ(config.SetRows(rows), E_FAIL);
    for (const std::int32_t mode : {-1, 4}) EXPECT_EQ(config.SetMode(mode), E_FAIL);
    EXPECT_EQ(sender.configure({0, 0, 4}), S_OK);
    EXPECT_EQ(sender.pause(), S_OK);
    const auto expectClosed = [&] {
        EXPECT_EQ(config.SetColumns(5), E_FAIL);
        EXPECT_EQ(config.SetRows(5), E_FAIL);
        EXPECT_EQ(config.SetMode(1), E_FAIL);
    };
    expectClosed();
    sender.run();
    expectClosed();
}

TEST_F(SenderTest, PauseTakesOnlyAMatrix) {
    struct Case {
        Matrix matrix;
        HRESULT result;
    };
    for (const Case& c : {Case{{0, 0, 4}, S_OK},
                          {{1, 0, 4}, E_FAIL},
                          {{1, 1, 4}, S_OK},
                          {{2, 20, 5}, S_OK},
                          {{2, 20, 6}, E_FAIL},
                          {{2, 11, 10}, E_FAIL},
                          {{3, 3, 10}, E_FAIL},
                          {{3, 4, 10}, S_OK},
                          {{3, 10, 10}, S_OK}}) {
        Sender sender;
        ASSERT_EQ(sender.configure(c.matrix), S_OK);
        EXPECT_EQ(sender.pause(), c.result)
            << c.matrix.mode << ' ' << c.matrix.columns << 'x' << c.matrix.rows;
    }
    Sender unconfigured;
    EXPECT_EQ(unconfigured.config().SetMode(1), S_OK);
    EXPECT_EQ(unconfigured.filter().Run(0), E_FAIL) << "rows were never set";
}

TEST_F(SenderTest, ProtectsFromPauseToPauseAndDeliversWhileRunning) {
    Sender sender;
    sender.connect();
    ASSERT_EQ(sender.configure({1, 4, 4}), S_OK);
    const auto delivered = [&] { return sender.sink().arrivals().size(); };
    ASSERT_EQ(sender.pause(), S_OK);
    sender.feed(mediaPackets(6));
    EXPECT_EQ(delivered(), 0u) << "dropped while paused";
    sender.run();
    sender.feed(mediaPackets(2));
    EXPECT_EQ(delivered(), 1u) << "two packets of this row came during the pause";

    sender.feed(mediaPackets(2));
    ASSERT_EQ(sender.pause(), S_OK);
    sender.run();
    sender.feed(mediaPackets(8));
    EXPECT_EQ(delivered(), 1u) << "a pause ends protection";

    sender.stop();
    sender.pause();
    sender.feed(mediaPackets(3));
    ASSERT_EQ(sender.filter().Pause(), S_OK);
    sender.run();
    sender.feed(mediaPackets(3));
    EXPECT_EQ(delivered(), 1u) << "a second pause starts the matrix again";
    sender.feed(mediaPacket(3));
    EXPECT_EQ(delivered(), 2u);
}

TEST_F(SenderTest, ModeNoneEndsWhatARunBeforeItBegan) {
    Sender sender;
    sender.connect();
    ASSERT_EQ(sender.configure({1, 1, 4}), S_OK);
    sender.run();
    sender.feed(mediaPackets(2));
    sender.stop();
    ASSERT_EQ(sender.config().SetMode(0), S_OK);
    sender.run();
    sender.feed(mediaPackets(2));
    EXPECT_EQ(sender.sink().arrivals().size(), 2u);
}

TEST_F(SenderTest, TheEndGoesOutOnBothOutputsAndUnfinishedFecDoesNot) {
    Sender sender;
    sender.connect();
    ASSERT_EQ(sender.configure({1, 4, 4}), S_OK);
    sender.run();
    sender.feed(mediaPackets(3));
    EXPECT_EQ(sender.feeder().output(0).DeliverEndOfStream(), S_OK);
    EXPECT_EQ(sender.sink().arrivals(), (std::vector<Arrival>{{0, {}}, {1, {}}}));
}

TEST_F(SenderTest, AForeignExceptionIsAFailureOfThatPacketAlone) {
    Sender sender;
    sender.connect();
    ASSERT_EQ(sender.configure({1, 1, 4}), S_OK);
    sender.run();
    sender.sink().onReceive([] { throw std::bad_alloc(); });
    EXPECT_EQ(sender.feed(mediaPacket(0)), E_FAIL);
    sender.sink().onReceive([] { throw 1; });
    EXPECT_EQ(sender.feed(mediaPacket(1)), E_FAIL);
    sender.sink().onReceive(nullptr);
    sender.feed(mediaPackets(2));
    EXPECT_EQ(sender.sink().arrivals().size(), 2u);
}

TEST_F(SenderTest, FecPacketsLongerThanTheirBufferAreDropped) {
    Sender sender;
    sender.sink().limitBuffers(300);
    sender.connect();
    ASSERT_EQ(sender.configure({1, 1, 4}), S_OK);
    sender.run();
    for (const std::size_t length : {284u, 285u, 1400u, 20u})
        EXPECT_EQ(sender.feed(mediaPacket(0, length)), S_OK);
    std::vector<std::size_t> lengths;
    for (const Arrival& arrival : sender.sink().arrivals()) lengths.push_back(arrival.bytes.size());
    EXPECT_EQ(lengths, (std::vector<std::size_t>{300, 36}));
}

TEST_F(SenderTest, StopReleasesAStreamThatWaitsForABuffer) {
    Sender sender;
    sender.connect();
    sender.sink().hold(true);
    ASSERT_EQ(sender.configure({1, 1, 4}), S_OK);
    sender.run();
    std::atomic<int> fed{0};
    std::thread streaming([&] {
        while (fed < 17 && sender.feed(mediaPacket(0)) == S_OK) ++fed;
    });
    while (sender.sink().arrivals().size() < 16) Sleep(1);
    Sleep(20);
    EXPECT_EQ(fed, 16);
    EXPECT_EQ(sender.filter().Stop(), S_OK);
    streaming.join();
    EXPECT_EQ(fed, 17) << "a packet whose FEC packet found no buffer is no failure";
    sender.sink().hold(false);
}

TEST_F(SenderTest, StreamsAndStateChangesMayCollide) {
    Sender sender;
    sender.connect();
    ASSERT_EQ(sender.configure({3, 4, 4}), S_OK);
    std::atomic<bool> done{false};
    const auto stream = [&] {
        for (unsigned n = 0; !done; ++n) sender.feed(mediaPacket(n));
    };
    sender.run();
    std::thread one(stream);
    std::thread other(stream);
    for (int round = 0; round < 100; ++round) {
        sender.filter().Pause();
        if (round % 2 != 0) sender.filter().Stop();
        sender.filter().Pause();
        sender.filter().Run(0);
        Sleep(1);
    }
    done = true;
    one.join();
    other.join();
    EXPECT_FALSE(sender.sink().arrivals().empty());
}

TEST_F(SenderTest, PinsTakeAndOfferRtpAlone) {
    Sender sender;
    const CMediaType rtp(MEDIATYPE_Rtp, MEDIASUBTYPE_Rtp);
    const CMediaType other(MEDIATYPE_Rtp, MEDIASUBTYPE_MPEG2_TRANSPORT);
    for (int n = 0; n < sender.filter().GetPinCount(); ++n) {
        CBasePin* pin = sender.filter().GetPin(n);
        EXPECT_EQ(pin->CheckMediaType(&rtp), S_OK);
        EXPECT_EQ(pin->CheckMediaType(&other), S_FALSE);
        CMediaType offered;
        EXPECT_EQ(pin->GetMediaType(0, &offered), S_OK);
        EXPECT_TRUE(offered == rtp);
        for (const int position : {-1, 1})
            EXPECT_EQ(pin->GetMediaType(position, &offered), VFW_S_NO_MORE_ITEMS);
    }
    EXPECT_EQ(sender.filter().GetPin(1)->CheckMediaType(nullptr), E_POINTER);
    EXPECT_EQ(sender.filter().GetPin(-1), nullptr);
    EXPECT_EQ(sender.filter().GetPin(3), nullptr);
}

}  // namespace

}  // namespace mvrtpfec
