#include <future>

#include "framework/samples/media_data_impl.h"
#include "tests/receiver/receiver_fixture.h"

namespace mvrtpfec {

namespace {

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
