#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "framework/base/mem_allocator.h"
#include "framework/pins/input_pin_with_dynamic_media_type.h"
#include "framework/pins/output_pin_with_dynamic_media_type.h"
#include "framework/pins/upstream_pin.h"
#include "framework/samples/media_data_impl.h"
#include "tests/shared/test_filters.h"

namespace mvrtpfec {

namespace {

/// The type a sample carries; 0 for none, otherwise the number of a testType.
int carriedType(IMediaSample* sample) {
    AM_MEDIA_TYPE* type = nullptr;
    EXPECT_TRUE(SUCCEEDED(sample->GetMediaType(&type)));
    if (type == nullptr) return 0;
    const auto number = static_cast<int>(type->subtype.Data1);
    DeleteMediaType(type);
    return number;
}

class DynamicInput final : public TestPin<CInputPinWithDynamicMediaType> {
public:
    DynamicInput(CBaseFilter* filter, CCritSec* lock, HRESULT* result, LPCWSTR name)
        : TestPin("DynamicInput", filter, lock, result, name) {
        behaviour.accepted = {testType(1), testType(2)};
        behaviour.onCompleteConnect = [this] { return ++connects, S_OK; };
    }

    int connects = 0;
    int reconnects = 0;
    HRESULT onReconnect = S_OK;
    std::optional<LONG> buffersNeeded;
    std::vector<int> types;  ///< what the samples carried

    HRESULT CompleteReconnect(IPin*) override { return ++reconnects, onReconnect; }
    HRESULT ReceiveSample(IMediaSample* sample) override {
        types.push_back(carriedType(sample));
        return S_OK;
    }
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) override {
        if (!buffersNeeded) return E_NOTIMPL;
        *properties = {*buffersNeeded, 64, 1, 0};
        return S_OK;
    }
};

class DynamicOutput final : public TestPin<COutputPinWithDynamicMediaType> {
public:
    DynamicOutput(CBaseFilter* filter, CCritSec* lock, HRESULT* result, LPCWSTR name)
        : TestPin("DynamicOutput", filter, lock, result, name) {}

    HRESULT DecideBufferSize(IMemAllocator* chosen, ALLOCATOR_PROPERTIES* request) override {
        *request = {4, 64, 1, 0};
        ALLOCATOR_PROPERTIES actual{};
        return chosen->SetProperties(request, &actual);
    }
};

class DynamicInputTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(source_->pin(0).Connect(&input(), nullptr), S_OK);
        for (IBaseFilter* filter :
             {static_cast<IBaseFilter*>(sink_.get()), static_cast<IBaseFilter*>(source_.get())})
            ASSERT_EQ(filter->Run(0), S_OK);
    }
    DynamicInput& input() { return sink_->pin(); }
    HRESULT reconnect(std::uint8_t type, std::size_t from = 0) {
        const CMediaType wanted = testType(type);
        return input().ReceiveConnection(&source_->pin(from), &wanted);
    }
    void send(int count) {
        for (int i = 0; i < count; ++i) ASSERT_EQ(source_->send({1}), S_OK);
    }

    Held<TestSource> source_{2};
    Held<TestFilter<DynamicInput>> sink_{1};
};

TEST_F(DynamicInputTest, TellsTheTypeOnceAfterEachConnection) {
    send(2);
    EXPECT_EQ(reconnect(2), S_OK);
    send(2);
    EXPECT_EQ(input().types, (std::vector{1, 0, 2, 0}));
    EXPECT_EQ(input().connects, 1);
    EXPECT_EQ(input().reconnects, 1);

    EXPECT_EQ(reconnect(1, 1), S_OK) << "from another pin, in a running graph";
    EXPECT_EQ(input().connects, 2);
    EXPECT_TRUE(isSameObject(input().GetConnected(), static_cast<IPin*>(&source_->pin(1))));
}

TEST_F(DynamicInputTest, ASamplesOwnTypeCounts) {
    COOBMediaSample sample(nullptr, 0);
    sample.AddRef();
    CMediaType type = testType(2);
    sample.SetMediaType(&type);
    EXPECT_EQ(input().Receive(&sample), S_OK);
    send(1);
    EXPECT_EQ(input().types, (std::vector{2, 0}));
    EXPECT_EQ(input().CurrentMediaType(), type);
}

TEST_F(DynamicInputTest, RefusalsLeaveTheConnection) {
    struct Case {
        HRESULT answer;
        HRESULT result;
    };
    for (const auto& [answer, result] :
         {Case{S_FALSE, VFW_E_TYPE_NOT_ACCEPTED}, Case{E_FAIL, VFW_E_TYPE_NOT_ACCEPTED},
          Case{E_INVALIDARG, VFW_E_TYPE_NOT_ACCEPTED}, Case{E_OUTOFMEMORY, E_OUTOFMEMORY}}) {
        input().behaviour.onCheckMediaType = [answer = answer] { return answer; };
        EXPECT_EQ(reconnect(2), result);
    }
    input().behaviour.onCheckMediaType = []() -> HRESULT { throw 1; };
    EXPECT_EQ(reconnect(2), E_FAIL);
    EXPECT_EQ(input().ReceiveConnection(nullptr, nullptr), E_POINTER);
    EXPECT_TRUE(input().IsConnected());
    EXPECT_EQ(input().CurrentMediaType(), testType(1));
}

TEST_F(DynamicInputTest, AFailureAtTheEndDisconnects) {
    input().onReconnect = E_ACCESSDENIED;
    EXPECT_EQ(reconnect(2), E_ACCESSDENIED);
    EXPECT_FALSE(input().IsConnected());
    input().behaviour.onCompleteConnect = []() -> HRESULT { throw std::runtime_error("no"); };
    EXPECT_EQ(reconnect(2), E_FAIL);
    EXPECT_FALSE(input().IsConnected());
    COOBMediaSample sample(nullptr, 0);
    sample.AddRef();
    EXPECT_EQ(input().Receive(&sample), VFW_E_NOT_CONNECTED) << "there is no type to tell";
}

/// The last type is told although the streaming thread clears what the reconnecting one sets.
TEST_F(DynamicInputTest, NoReconnectionIsMissedWhileStreaming) {
    constexpr std::uint8_t changes = 200;
    std::atomic<int> sent{0};
    std::atomic<bool> done{false};
    std::thread streaming([&] {
        for (; !done; ++sent) send(1);
    });
    while (sent == 0) std::this_thread::yield();
    for (std::uint8_t i = 0; i < changes; ++i) EXPECT_EQ(reconnect(i % 2 + 1), S_OK);
    done = true;
    streaming.join();
    send(1);
    int last = 0;
    int told = 0;
    for (const int type : input().types) {
        if (type != 0) last = type;
        told += type != 0;
    }
    EXPECT_EQ(last, 2);
    EXPECT_LE(told, changes + 1);
}

TEST_F(DynamicInputTest, AllocatorsMustMeetTheRequirements) {
    CComPtr<IMemAllocator> allocator;
    ASSERT_EQ(CreateMemoryAllocator(&allocator), S_OK);
    ALLOCATOR_PROPERTIES properties{9, 64, 1, 0};
    ASSERT_EQ(allocator->SetProperties(&properties, &properties), S_OK);
    EXPECT_EQ(input().NotifyAllocator(allocator, FALSE), S_OK) << "nothing is required";
    input().buffersNeeded = 9;
    EXPECT_EQ(input().NotifyAllocator(allocator, FALSE), S_OK);
    input().buffersNeeded = 10;
    EXPECT_EQ(input().NotifyAllocator(allocator, FALSE), E_FAIL);
}

TEST(DynamicOutputPin, TellsTheTypeWithTheFirstSample) {
    Held<TestFilter<DynamicOutput>> source(1);
    Held<TestSink> sink(1);
    std::vector<int> types;
    sink->pin().onSample = [&](IMediaSample* sample) { types.push_back(carriedType(sample)); };
    DynamicOutput& output = source->pin();
    COOBMediaSample sample(nullptr, 0);
    sample.AddRef();
    EXPECT_EQ(output.Deliver(&sample), VFW_E_NOT_CONNECTED);

    ASSERT_EQ(output.Connect(&sink->pin(), nullptr), S_OK);
    sink->Pause();
    for (int i = 0; i < 3; ++i) EXPECT_EQ(output.Deliver(&sample), S_OK);
    EXPECT_EQ(types, (std::vector{1, 0, 0}));
    sink->Stop();
    EXPECT_EQ(output.Deliver(&sample), VFW_E_WRONG_STATE);
}

TEST(UpStreamPinTest, DeliversThroughThePin) {
    Held<TestSource> source(1);
    Held<TestSink> sink(1);
    ASSERT_EQ(source->pin().Connect(&sink->pin(), nullptr), S_OK);
    const std::unique_ptr<IOutputPin> upstream = std::make_unique<UpStreamPin>(&source->pin());
    IMediaData* const untouched = reinterpret_cast<IMediaData*>(&source);
    IMediaData* data = untouched;
    EXPECT_EQ(upstream->GetDeliveryBuffer(&data, nullptr, nullptr, 0), VFW_E_NOT_COMMITTED);
    EXPECT_EQ(data, untouched);

    sink->Pause();
    EXPECT_EQ(upstream->Active(), S_OK);
    ASSERT_EQ(upstream->GetDeliveryBuffer(&data, nullptr, nullptr, 0), S_OK);
    BYTE* bytes = nullptr;
    data->GetPointer(&bytes);
    bytes[0] = 9;
    data->SetActualDataLength(1);
    EXPECT_EQ(upstream->Deliver(data), S_OK);
    IMediaData2* other = nullptr;
    CreateMediaData2(sampleOf(data), &other);
    EXPECT_EQ(upstream->Deliver(other), S_OK);
    EXPECT_EQ(other->Release(), 0u);
    EXPECT_EQ(data->Release(), 0u);
    EXPECT_EQ(upstream->Deliver(nullptr), E_POINTER);
    MediaData none(nullptr);
    EXPECT_EQ(upstream->Deliver(&none), E_INVALIDARG);
    EXPECT_EQ(upstream->DeliverEndOfStream(), S_OK);
    EXPECT_EQ(upstream->Inactive(), S_OK);
    EXPECT_EQ(sink->pin().packets(), (std::vector<Bytes>{{9}, {9}}));
    EXPECT_EQ(sink->pin().endsOfStream, 1);
}

}  // namespace

}  // namespace mvrtpfec
