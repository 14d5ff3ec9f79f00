#include <algorithm>
#include <array>
#include <future>
#include <span>

#include "framework/samples/media_data_impl.h"
#include "platform/component/task_memory.h"
#include "platform/wide_literal.h"
#include "tests/receiver/receiver_fixture.h"

namespace mvrtpfec {

using platform::operator""_w;

namespace {

using StatesTest = ReceiverTest;

/// Lost, rebuilt, abandoned, received.
using Statistics = std::array<std::uint64_t, 4>;
constexpr Statistics untouched{99, 99, 99, 99};

HRESULT read(CRtpFecIn& filter, Statistics& s) {
    s = untouched;
    return filter.GetStatistics(&s[0], &s[1], &s[2], &s[3]);
}

TEST_F(StatesTest, EachStartFromStoppedHasAFreshDecoder) {
    connect();
    Statistics s{};
    EXPECT_EQ(read(filter(), s), E_FAIL);
    EXPECT_EQ(s, untouched) << "nothing is written";
    for (std::size_t n = 0; n < 4; ++n) {
        const auto place = [&](std::size_t i) { return i == n ? nullptr : &s[i]; };
        EXPECT_EQ(filter().GetStatistics(place(0), place(1), place(2), place(3)), E_POINTER) << n;
    }
    EXPECT_EQ(filter().GetTotals(nullptr), E_POINTER);

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

using PinsTest = ReceiverTest;

CComPtr<IMemAllocator> poolOf(LONG buffers) {
    CComPtr<IMemAllocator> pool;
    EXPECT_EQ(CreateMemoryAllocator(&pool), S_OK);
    ALLOCATOR_PROPERTIES properties{buffers, 1, 1, 0};
    EXPECT_EQ(pool->SetProperties(&properties, &properties), S_OK);
    return pool;
}

TEST_F(PinsTest, InputsTakeAnyTypeAndEnoughBuffers) {
    auto& pin = static_cast<CBaseInputPin&>(*filter().GetPin(2));
    const CMediaType odd = testType(200);
    EXPECT_EQ(pin.CheckMediaType(&odd), S_OK);
    CMediaType offer;
    EXPECT_EQ(pin.GetMediaType(0, nullptr), E_POINTER);
    EXPECT_EQ(pin.GetMediaType(-1, &offer), E_INVALIDARG);
    EXPECT_EQ(pin.GetMediaType(1, &offer), VFW_S_NO_MORE_ITEMS);
    EXPECT_EQ(pin.GetMediaType(0, &offer), S_OK);
    EXPECT_EQ(offer.majortype, MEDIATYPE_Video);
    EXPECT_EQ(offer.subtype.Data1, 0x8D2D71CBu);

    ALLOCATOR_PROPERTIES required{};
    EXPECT_EQ(pin.GetAllocatorRequirements(&required), S_OK);
    EXPECT_EQ(required.cBuffers, 100);
    EXPECT_EQ(required.cbBuffer, 1);
    EXPECT_EQ(required.cbAlign, 32);
    EXPECT_EQ(pin.NotifyAllocator(poolOf(99), TRUE), E_FAIL);
    EXPECT_EQ(pin.NotifyAllocator(poolOf(100), TRUE), S_OK);
}

TEST_F(PinsTest, TheOutputInsistsOnTransportStreamAndWholePackets) {
    const CMediaType stream(MEDIATYPE_Stream, MEDIASUBTYPE_MPEG2_TRANSPORT);
    const CMediaType other = testType(1);
    EXPECT_EQ(output().CheckMediaType(&stream), S_OK);
    EXPECT_EQ(output().CheckMediaType(&other), S_FALSE);
    EXPECT_EQ(output().CheckMediaType(nullptr), E_POINTER);

    const auto decide = [&](LONG limit) {
        const CComPtr<IMemAllocator> pool(new LimitedAllocator(limit));
        ALLOCATOR_PROPERTIES request{200, 5, 64, 3};
        const HRESULT result = output().DecideBufferSize(pool, &request);
        EXPECT_EQ(request.cBuffers, 200);
        EXPECT_EQ(request.cbBuffer, 1400);
        EXPECT_EQ(request.cbAlign, 64);
        EXPECT_EQ(request.cbPrefix, 0);
        return result;
    };
    EXPECT_EQ(decide(1399), E_FAIL);
    EXPECT_EQ(decide(1400), S_OK);
}

struct PoolLog : mvn::log::DummyLogPerf {
    void RegisterBuffer(const char* name) override { registered += name; }
    void NotifyBufferFull(const char* name) override { full += std::string_view(name) == "rtp_fec_in"; }
    std::string registered;
    std::atomic<int> full{0};
};

TEST_F(PinsTest, WrappersGoThroughTheOutput) {
    PoolLog log;
    filter().SetLogPerf(&log);
    start();
    EXPECT_EQ(log.registered, "rtp_fec_in");
    IOutputPin2& pin = output();
    std::vector<IMediaData2*> taken(100);
    for (IMediaData2*& data : taken) ASSERT_EQ(pin.GetDeliveryBuffer(&data, nullptr, nullptr, 0), S_OK);
    EXPECT_EQ(log.full, 0);

    IMediaData2* late = nullptr;
    auto waiting =
        std::async(std::launch::async, [&] { return pin.GetDeliveryBuffer(&late, nullptr, nullptr, 0); });
    EXPECT_TRUE(soon([&] { return log.full == 1; })) << "before it waits";
    taken[0]->SetActualDataLength(3);
    EXPECT_EQ(pin.Deliver(taken[0]), S_OK);
    for (IMediaData2* data : taken) data->Release();
    EXPECT_EQ(waiting.get(), S_OK);
    late->Release();

    EXPECT_EQ(sink().received, 1);
    EXPECT_EQ(pin.Deliver(nullptr), S_OK);
    EXPECT_EQ(sink().endsOfStream, 1) << "null is the end of the stream";
    stop();
    EXPECT_EQ(pin.GetDeliveryBuffer(&late, nullptr, nullptr, 0), VFW_E_NOT_COMMITTED);
    filter().SetLogPerf(nullptr);
}

}  // namespace

}  // namespace mvrtpfec
