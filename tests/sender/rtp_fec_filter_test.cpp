#include <atomic>
#include <chrono>

#include "tests/sender/sender_fixture.h"
#include "tests/shared/limited_allocator.h"

namespace mvrtpfec {

namespace {

struct Wiring {
    bool a = true;
    bool b = true;
};

/// Runs a sender from its creation on, on a fresh thread, and compares every byte.
void expectFec(const Matrix& matrix, const std::vector<Bytes>& media, Wiring wiring = {}) {
    std::vector<Arrival> expected;
    std::vector<Arrival> arrived;
    std::thread([&] { expected = expectedFec(matrix, media, wiring.a, wiring.b); }).join();
    std::thread([&] {
        Sender sender;
        sender.connect(wiring.a, wiring.b);
        EXPECT_EQ(sender.configure(matrix), S_OK);
        sender.run();
        sender.feed(media);
        arrived = sender.arrivals();
    }).join();
    EXPECT_FALSE(expected.empty());
    EXPECT_TRUE(arrived == expected) << arrived.size() << " packets, expected " << expected.size()
                                     << ", mode " << matrix.mode;
}

TEST(Sender, DeliversWhatItsComposersMake) {
    for (const Matrix& matrix : {Matrix{1, 5, 4}, {1, 1, 20}, {2, 5, 4}, {2, 1, 4}, {3, 4, 4}, {3, 10, 10}})
        expectFec(matrix, mediaPackets(65'530, 250));
    for (const Wiring wiring : {Wiring{false, true}, Wiring{true, false}})
        expectFec({3, 4, 4}, mediaPackets(1, 200), wiring);
}

TEST(Sender, PacketsThatFitNoFecPacketTakeNoPlace) {
    std::vector<Bytes> media = mediaPackets(1, 60);
    for (const std::size_t length : {1400u, 1401u, 12u, 11u, 1u, 2048u}) {
        Bytes odd = mediaPacket(1000, std::max<std::size_t>(length, rtpHeaderSize));
        odd.resize(length);
        media.insert(media.begin() + 9, odd);
    }
    expectFec({3, 4, 4}, media);
}

TEST(Sender, ConfigurationIsTakenInRangeAndWhileStopped) {
    Sender sender;
    for (const std::int32_t columns : {-1, 21, 65536, INT32_MIN, INT32_MAX})
        EXPECT_EQ(sender.filter->SetColumns(columns), E_FAIL) << columns;
    for (const std::int32_t rows : {-4, 3, 21, 65540, INT32_MIN, INT32_MAX})
        EXPECT_EQ(sender.filter->SetRows(rows), E_FAIL) << rows;
    for (const std::int32_t mode : {-1, 4, 65537, INT32_MIN, INT32_MAX})
        EXPECT_EQ(sender.filter->SetMode(mode), E_FAIL) << mode;
    EXPECT_EQ(sender.pause(), S_OK) << "nothing refused was kept: mode 0";
    for (const bool running : {false, true}) {
        if (running) sender.run();
        EXPECT_EQ(sender.filter->SetColumns(5), E_FAIL);
        EXPECT_EQ(sender.filter->SetRows(5), E_FAIL);
        EXPECT_EQ(sender.filter->SetMode(1), E_FAIL);
    }
}

TEST(Sender, PauseTakesOnlyAMatrix) {
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
    EXPECT_EQ(unconfigured.filter->SetMode(1), S_OK);
    EXPECT_EQ(unconfigured.filter->Run(0), E_FAIL) << "rows were never set";
}

TEST(Sender, ProtectsFromPauseToPauseAndDeliversWhileRunning) {
    Sender sender;
    sender.connect();
    ASSERT_EQ(sender.configure({1, 4, 4}), S_OK);
    ASSERT_EQ(sender.pause(), S_OK);
    sender.feed(6);
    EXPECT_EQ(sender.delivered(), 0u) << "dropped while paused";
    sender.run();
    sender.feed(2);
    EXPECT_EQ(sender.delivered(), 1u) << "two packets of this row came during the pause";

    sender.feed(2);
    ASSERT_EQ(sender.pause(), S_OK);
    sender.run();
    sender.feed(8);
    EXPECT_EQ(sender.delivered(), 1u) << "a pause ends protection";

    sender.stop();
    sender.pause();
    sender.feed(3);
    ASSERT_EQ(sender.filter->Pause(), S_OK);
    sender.run();
    sender.feed(3);
    EXPECT_EQ(sender.delivered(), 1u) << "a second pause starts the matrix again";
    sender.feed(1);
    EXPECT_EQ(sender.delivered(), 2u);
}

TEST(Sender, ModeNoneEndsWhatARunBeforeItBegan) {
    Sender sender;
    sender.start({1, 1, 4});
    sender.feed(2);
    sender.stop();
    ASSERT_EQ(sender.filter->SetMode(0), S_OK);
    sender.run();
    sender.feed(2);
    EXPECT_EQ(sender.delivered(), 2u);
}

TEST(Sender, TheEndGoesOutOnBothOutputsAndUnfinishedFecDoesNot) {
    Sender sender;
    sender.start({1, 4, 4});
    sender.feed(3);
    EXPECT_EQ(sender.source->pin().DeliverEndOfStream(), S_OK);
    for (const std::size_t n : {0u, 1u}) EXPECT_EQ(sender.sink->pin(n).endsOfStream, 1);
    EXPECT_EQ(sender.delivered(), 0u);
}

TEST(Sender, AForeignExceptionIsAFailureOfThatPacketAlone) {
    Sender sender;
    sender.start({1, 1, 4});
    sender.onReceive = [] { throw std::bad_alloc(); };
    EXPECT_EQ(sender.feed(mediaPacket(0)), E_FAIL);
    sender.onReceive = [] { throw 1; };
    EXPECT_EQ(sender.feed(mediaPacket(1)), E_FAIL);
    sender.onReceive = nullptr;
    sender.feed(2);
    EXPECT_EQ(sender.delivered(), 2u);
}

TEST(Sender, FecPacketsLongerThanTheirBufferAreDropped) {
    Sender sender;
    for (const std::size_t n : {0u, 1u})
        sender.sink->pin(n).NotifyAllocator(CComPtr<IMemAllocator>(new LimitedAllocator(300)), FALSE);
    sender.start({1, 1, 4});
    for (const std::size_t length : {284u, 285u, 1400u, 20u})
        EXPECT_EQ(sender.feed(mediaPacket(0, length)), S_OK);
    ASSERT_EQ(sender.delivered(), 2u);
    EXPECT_EQ(sender.arrivals()[0].bytes.size(), 300u);
    EXPECT_EQ(sender.arrivals()[1].bytes.size(), 36u);
}

TEST(Sender, PacketsSentWhileFlushingTakeNoPlace) {
    Sender sender;
    sender.start({1, 1, 4});
    sender.source->pin().DeliverBeginFlush();
    EXPECT_EQ(sender.feed(mediaPacket(0)), S_FALSE);
    sender.source->pin().DeliverEndFlush();
    sender.feed(1);
    EXPECT_EQ(sender.delivered(), 1u);
}

TEST(Sender, StopReleasesAStreamThatWaitsForABuffer) {
    Sender sender;
    sender.sink->pin().hold(true);
    sender.start({1, 1, 4});
    std::atomic<int> fed{0};
    std::thread streaming([&] {
        while (fed < 17 && sender.feed(mediaPacket(0)) == S_OK) ++fed;
    });
    while (sender.delivered() < 16) Sleep(1);
    Sleep(20);
    EXPECT_EQ(fed, 16);
    EXPECT_EQ(sender.filter->Stop(), S_OK);
    streaming.join();
    EXPECT_EQ(fed, 17) << "a packet whose FEC packet found no buffer is no failure";
    sender.sink->pin().hold(false);
}

/// The streaming thread lets go of the lock for a moment only between two deliveries.
TEST(Sender, SlowDownstreamKeepsNoStateChangeWaitingForLong) {
    Sender sender;
    sender.start({1, 1, 4});
    sender.onReceive = [] { Sleep(2); };
    std::atomic<bool> done{false};
    std::thread stream([&] {
        while (!done)
            if (FAILED(sender.feed(mediaPacket(0)))) std::this_thread::yield();
    });
    std::chrono::steady_clock::duration longest{};
    for (int round = 0; round < 10; ++round) {
        const std::size_t before = sender.delivered();
        sender.run();
        sender.source->Stop();
        sender.source->Run(0);
        while (sender.delivered() < before + 3) std::this_thread::yield();
        const auto start = std::chrono::steady_clock::now();
        round % 2 == 0 ? sender.filter->Stop() : sender.filter->Pause();
        longest = std::max(longest, std::chrono::steady_clock::now() - start);
        sender.filter->Stop();
    }
    done = true;
    stream.join();
    EXPECT_LT(std::chrono::duration<double>(longest).count(), 1.0);
}

TEST(Sender, StreamsAndStateChangesMayCollide) {
    Sender sender;
    sender.start({3, 4, 4});
    std::atomic<bool> done{false};
    const auto stream = [&] {
        for (std::uint16_t n = 0; !done; ++n)
            if (FAILED(sender.feed(mediaPacket(n)))) std::this_thread::yield();
    };
    std::thread streams[] = {std::thread(stream), std::thread(stream)};
    for (int round = 0; round < 100; ++round) {
        if (round % 2 != 0) sender.stop();
        sender.filter->Pause();
        sender.run();
        Sleep(1);
    }
    done = true;
    for (std::thread& each : streams) each.join();
    EXPECT_GT(sender.delivered(), 0u);
}

TEST(Sender, PinsTakeAndOfferRtpAlone) {
    Sender sender;
    const CMediaType rtp(MEDIATYPE_Rtp, MEDIASUBTYPE_Rtp);
    const CMediaType other(MEDIATYPE_Rtp, MEDIASUBTYPE_MPEG2_TRANSPORT);
    for (int n = 0; n < sender.filter->GetPinCount(); ++n) {
        CBasePin* pin = sender.filter->GetPin(n);
        EXPECT_EQ(pin->CheckMediaType(&rtp), S_OK);
        EXPECT_EQ(pin->CheckMediaType(&other), S_FALSE);
        CMediaType offered;
        EXPECT_EQ(pin->GetMediaType(0, &offered), S_OK);
        EXPECT_TRUE(offered == rtp);
        for (const int position : {-1, 1})
            EXPECT_EQ(pin->GetMediaType(position, &offered), VFW_S_NO_MORE_ITEMS);
    }
    EXPECT_EQ(sender.filter->GetPin(1)->CheckMediaType(nullptr), E_POINTER);
    EXPECT_EQ(sender.filter->GetPin(-1), nullptr);
    EXPECT_EQ(sender.filter->GetPin(3), nullptr);
}

}  // namespace

}  // namespace mvrtpfec
