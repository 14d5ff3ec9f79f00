#include <algorithm>
#include <future>
#include <span>

#include "platform/component/task_memory.h"
#include "platform/wide_literal.h"
#include "tests/receiver/receiver_fixture.h"

namespace mvrtpfec {

using platform::operator""_w;

namespace {

using StatesTest = ReceiverTest;

struct Statistics {
    std::uint64_t lost = 99;
    std::uint64_t rebuilt = 99;
    std::uint64_t abandoned = 99;
    std::uint64_t received = 99;

    bool operator==(const Statistics&) const = default;
};

HRESULT read(CRtpFecIn& filter, Statistics& s) {
    s = {};
    return filter.GetStatistics(&s.lost, &s.rebuilt, &s.abandoned, &s.received);
}

TEST_F(StatesTest, EachStartFromStoppedHasAFreshDecoder) {
    connect();
    Statistics s;
    EXPECT_EQ(read(filter(), s), E_FAIL);
    EXPECT_EQ(s, Statistics()) << "nothing is written";
    EXPECT_EQ(filter().GetStatistics(nullptr, &s.lost, &s.lost, &s.lost), E_POINTER);

    EXPECT_EQ(filter().Pause(), S_OK);
    EXPECT_EQ(read(filter(), s), S_OK);
    EXPECT_EQ(s, (Statistics{0, 0, 0, 0}));

    run();
    sendAll(1, mediaPackets(1, 5));
    ASSERT_TRUE(received(5));
    EXPECT_EQ(filter().Pause(), S_OK);
    EXPECT_EQ(filter().Run(0), S_OK);
    EXPECT_EQ(read(filter(), s), S_OK);
    EXPECT_EQ(s, (Statistics{0, 0, 0, 5}));

    stop();
    EXPECT_EQ(read(filter(), s), E_FAIL);
    EXPECT_EQ(input(1).Receive(nullptr), E_POINTER);
    run();
    EXPECT_EQ(read(filter(), s), S_OK);
    EXPECT_EQ(s, (Statistics{0, 0, 0, 0}));
}

TEST_F(StatesTest, WhatArrivesWhileStoppedIsDropped) {
    start();
    stop();
    std::vector<std::uint8_t> bytes(60, 0);
    COOBMediaSample sample(bytes.data(), 60);
    sample.AddRef();
    EXPECT_EQ(input(0).Receive(&sample), S_OK);
    EXPECT_EQ(filter().GetPin(0)->EndOfStream(), S_OK);
    run();
    sendAll(0, mediaPackets(100, 3));
    EXPECT_TRUE(received(3));
    EXPECT_EQ(totals().resets, 0u) << "the sample was no packet";
    EXPECT_EQ(sample.AddRef(), 2u) << "and nobody keeps it";
}

TEST_F(StatesTest, StopDoesNotWaitForDownstream) {
    sink().hold(true);
    start();
    sendAll(0, mediaPackets(1, 150));
    sendAll(0, mediaPackets(152, 5));  // wait for their predecessor
    ASSERT_TRUE(soon([&] { return sink().received == 100; }));

    auto stopping = std::async(std::launch::async, [&] { return filter().Stop(); });
    const bool stopped = stopping.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    EXPECT_TRUE(stopped);
    sink().hold(false);
    EXPECT_EQ(stopping.get(), S_OK);

    stop();
    run();
    sendAll(0, mediaPackets(1, 10));
    EXPECT_TRUE(soon([&] {
        const std::vector<Bytes> packets = sink().packets();
        return std::ranges::equal(std::span(packets).last(7), mediaPackets(1, 7));
    })) << "something of the old run is left";
}

/// The statistics wait for a blocked downstream; state changes must not wait with them under the filter
/// lock, or nobody could stop the filter.
TEST_F(StatesTest, ARestartWhileDownstreamBlocksCanBeStopped) {
    std::atomic<bool> open{false};
    sink().onSample = [&](IMediaSample*) { soon([&] { return open.load(); }); };
    start();
    sendAll(0, mediaPackets(1, 10));
    auto stopping = std::async(std::launch::async, [&] { return filter().Stop(); });
    EXPECT_TRUE(soon([&] { return filter().IsStopped(); }));
    auto running = std::async(std::launch::async, [&] { return filter().Run(0); });
    EXPECT_TRUE(soon([&] { return filter().IsActive(); }));
    auto receiving = std::async(std::launch::async, [&] { return filter().GetPin(0)->EndOfStream(); });
    EXPECT_EQ(receiving.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    open = true;
    EXPECT_EQ(stopping.get(), S_OK);
    EXPECT_EQ(running.get(), S_OK);
}

TEST_F(StatesTest, ShowsItsFaces) {
    IBaseFilter* const filterObject = &filter();
    const auto face = [&](REFIID iid) { return queryFor<IUnknown>(filterObject, iid) != nullptr; };
    EXPECT_TRUE(face(IID_IRtpFecInConfig));
    EXPECT_TRUE(face(IID_IRtpFecInTotals));
    EXPECT_FALSE(face(IID_IMemInputPin));
    const auto pages = queryFor<ISpecifyPropertyPages>(filterObject, IID_ISpecifyPropertyPages);
    ASSERT_NE(pages, nullptr);
    CAUUID list{};
    EXPECT_EQ(pages->GetPages(nullptr), E_POINTER);
    ASSERT_EQ(pages->GetPages(&list), S_OK);
    ASSERT_EQ(list.cElems, 1u);
    EXPECT_EQ(list.pElems[0], CLSID_RtpFecInPropertyPage);
    CoTaskMemFree(list.pElems);

    const LPCWSTR names[] = {"Input #1"_w, "Input #2"_w, "Input #3"_w, "Output"_w};
    EXPECT_EQ(filter().GetPinCount(), 4);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(std::basic_string<WCHAR>(filter().GetPin(i)->Name()), names[i]);
    EXPECT_EQ(filter().GetPin(4), nullptr);
    EXPECT_EQ(filter().GetPin(-1), nullptr);
}

}  // namespace

}  // namespace mvrtpfec
