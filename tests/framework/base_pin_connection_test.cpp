#include <stdexcept>

#include <gtest/gtest.h>

#include "framework/base/mem_allocator.h"
#include "platform/component/task_memory.h"
#include "platform/wide_literal.h"
#include "tests/shared/object_count.h"
#include "tests/shared/test_filters.h"

namespace mvrtpfec {
namespace {

using platform::operator""_w;

class PinConnection : public ::testing::Test {
protected:
    TestOutputPin& output() { return source->pin(); }
    TestInputPin& input() { return sink->pin(); }

    HRESULT connect(const AM_MEDIA_TYPE* type = nullptr) { return output().Connect(&input(), type); }
    void disconnect() {
        output().Disconnect();
        input().Disconnect();
    }
    /// The type that both ends have.
    CMediaType connectedType() {
        CMediaType one;
        CMediaType other;
        EXPECT_EQ(output().ConnectionMediaType(&one), S_OK);
        EXPECT_EQ(input().ConnectionMediaType(&other), S_OK);
        EXPECT_TRUE(one == other);
        return one;
    }
    void expectUnconnected() {
        for (CBasePin* pin : {static_cast<CBasePin*>(&output()), static_cast<CBasePin*>(&input())}) {
            CComPtr<IPin> other;
            CMediaType type = testType(9);
            EXPECT_EQ(pin->ConnectedTo(&other), VFW_E_NOT_CONNECTED);
            EXPECT_EQ(other.p, nullptr);
            EXPECT_EQ(pin->ConnectionMediaType(&type), VFW_E_NOT_CONNECTED);
            EXPECT_FALSE(type.IsValid());
        }
        EXPECT_EQ(output().allocator().p, nullptr);
        EXPECT_EQ(input().allocator().p, nullptr);
        EXPECT_EQ(output().Deliver(nullptr), VFW_E_NOT_CONNECTED);
    }
    /// A failed connection leaves nothing behind that is in the way of the next one.
    void expectConnectFails(HRESULT expected, const AM_MEDIA_TYPE* type = nullptr) {
        EXPECT_EQ(connect(type), expected);
        expectUnconnected();
        output().behaviour = PinBehaviour();
        input().behaviour = PinBehaviour();
        EXPECT_EQ(connect(), S_OK);
        disconnect();
        expectUnconnected();
    }

    Held<TestSource> source{2};
    Held<TestSink> sink{2};
};

TEST_F(PinConnection, AgreesOnATypeThatBothAcceptOrOnNone) {
    const auto open = [](std::uint8_t number) {
        CMediaType type = testType(number);
        type.formattype = GUID_NULL;
        return type;
    };
    struct Case {
        std::vector<CMediaType> source, sink;
        bool sourceOffers, sinkOffers;
        CMediaType wanted;
        HRESULT result;
        std::uint8_t agreed = 0;
        bool ownTypesFirst = false;
    };
    const std::vector<CMediaType> rising{testType(1), testType(2), testType(3)};
    const std::vector<CMediaType> falling(rising.rbegin(), rising.rend());
    const std::vector<CMediaType> one{testType(1)}, two{testType(2)}, both{testType(1), testType(2)};
    const Case cases[] = {
        {both, falling, true, true, {}, S_OK, 2},
        {both, falling, true, true, {}, S_OK, 1, true},
        {both, two, true, false, {}, S_OK, 2},
        {rising, falling, true, true, open(2), S_OK, 2},
        {rising, falling, true, true, open(4), VFW_E_NO_ACCEPTABLE_TYPES},
        {both, one, false, false, testType(1), S_OK, 1},
        {both, one, false, false, testType(2), VFW_E_TYPE_NOT_ACCEPTED},
        {one, both, false, false, testType(2), VFW_E_TYPE_NOT_ACCEPTED},
    };
    for (const Case& c : cases) {
        const std::ptrdiff_t which = &c - cases;
        output().tryOwnTypesFirst(c.ownTypesFirst);
        output().behaviour.accepted = c.source;
        output().behaviour.offered = c.sourceOffers ? c.source : std::vector<CMediaType>{};
        input().behaviour.accepted = c.sink;
        input().behaviour.offered = c.sinkOffers ? c.sink : std::vector<CMediaType>{};
        EXPECT_EQ(connect(&c.wanted), c.result) << which;
        if (c.agreed == 0)
            expectUnconnected();
        else
            EXPECT_TRUE(connectedType() == testType(c.agreed)) << which;
        disconnect();
    }
}

TEST_F(PinConnection, AConnectedPinTakesNoOther) {
    ASSERT_EQ(connect(), S_OK);
    EXPECT_TRUE(output().IsConnectedTo(&input()));
    EXPECT_FALSE(output().IsConnectedTo(&sink->pin(1)));
    EXPECT_EQ(connect(), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(source->pin(1).Connect(&input(), nullptr), VFW_E_ALREADY_CONNECTED);
    EXPECT_FALSE(source->pin(1).IsConnected());
}

TEST_F(PinConnection, FailuresOfEitherSideAreUndoneOnBothAndTold) {
    using Place = std::function<HRESULT()> PinBehaviour::*;
    constexpr Place check = &PinBehaviour::onCheckMediaType, complete = &PinBehaviour::onCompleteConnect;
    const auto fault = []() -> HRESULT { throw std::runtime_error("fault"); };
    const auto noClock = [] { return VFW_E_NO_CLOCK; };
    const CMediaType type = testType(1);
    for (PinBehaviour* side : {&output().behaviour, &input().behaviour}) {
        for (const Place place : {check, complete}) {
            side->*place = fault;
            expectConnectFails(E_FAIL, &type);
        }
        side->*complete = noClock;
        expectConnectFails(VFW_E_NO_CLOCK);
    }
    output().behaviour.onCheckMediaType = noClock;
    expectConnectFails(VFW_E_NO_CLOCK);
    input().behaviour.onCheckMediaType = [] { return E_INVALIDARG; };
    expectConnectFails(VFW_E_NO_ACCEPTABLE_TYPES);
    output().behaviour.onCheckMediaType = fault;
    EXPECT_EQ(output().QueryAccept(&type), S_FALSE);
}

TEST_F(PinConnection, RefusesWhatCannotBeConnected) {
    const CMediaType type = testType(1);
    EXPECT_EQ(input().ReceiveConnection(nullptr, &type), E_POINTER);
    EXPECT_EQ(input().ReceiveConnection(&output(), nullptr), E_POINTER);
    EXPECT_EQ(output().Connect(&source->pin(1), &type), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(input().ReceiveConnection(&sink->pin(1), &type), VFW_E_INVALID_DIRECTION);
    expectUnconnected();
}

TEST_F(PinConnection, ConnectsAndDisconnectsOnlyWhileStopped) {
    sink->Pause();
    EXPECT_EQ(connect(), VFW_E_NOT_STOPPED);
    sink->Stop();
    source->Pause();
    EXPECT_EQ(connect(), VFW_E_NOT_STOPPED);
    output().SetReconnectWhenActive(true);
    EXPECT_EQ(connect(), S_OK);
    EXPECT_EQ(output().Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_TRUE(output().IsConnected());
    source->Stop();
    EXPECT_EQ(output().Disconnect(), S_OK);
    EXPECT_EQ(output().Disconnect(), S_FALSE);
    EXPECT_EQ(input().Disconnect(), S_OK);
}

TEST_F(PinConnection, AgreesTheReceiversAllocatorByItsRequirements) {
    input().requirements = ALLOCATOR_PROPERTIES{100, 1400, 16, 4};
    ASSERT_EQ(connect(), S_OK);
    EXPECT_EQ(output().allocator().p, input().allocator().p);
    EXPECT_FALSE(input().IsReadOnly());
    ALLOCATOR_PROPERTIES agreed{};
    output().allocator()->GetProperties(&agreed);
    EXPECT_EQ(agreed.cBuffers, 100);
    EXPECT_GE(agreed.cbBuffer, 1400);
    EXPECT_EQ(agreed.cbAlign, 16);
    EXPECT_EQ(agreed.cbPrefix, 4);
}

TEST_F(PinConnection, OffersItsOwnAllocatorWhenTheReceiversIsRefused) {
    CComPtr<IMemAllocator> receivers;
    ASSERT_EQ(input().GetAllocator(&receivers), S_OK);
    input().allocatorsRefused = 1;
    ASSERT_EQ(connect(), S_OK);
    EXPECT_NE(output().allocator().p, receivers.p);
    EXPECT_EQ(output().allocator().p, input().allocator().p);
    EXPECT_EQ(output().decided, 2);
    EXPECT_EQ(output().required.cbAlign, 1);
    disconnect();

    input().allocatorsRefused = 2;
    const CMediaType type = testType(1);
    expectConnectFails(VFW_E_BADALIGN, &type);
}

TEST_F(PinConnection, PinsAreFoundByTheNamesTheyTell) {
    LPWSTR id = nullptr;
    ASSERT_EQ(source->pin(1).QueryId(&id), S_OK);
    CComPtr<IPin> found;
    EXPECT_EQ(source->FindPin(id, &found), S_OK);
    EXPECT_TRUE(isSameObject(found, static_cast<IPin*>(&source->pin(1))));
    CoTaskMemFree(id);
    CComPtr<IPin> missing;
    EXPECT_EQ(source->FindPin("Pin 3"_w, &missing), VFW_E_NOT_FOUND);

    PIN_INFO info{};
    ASSERT_EQ(found->QueryPinInfo(&info), S_OK);
    EXPECT_EQ(info.pFilter, source.get());
    EXPECT_EQ(info.dir, PINDIR_OUTPUT);
    EXPECT_EQ(std::basic_string_view<WCHAR>(info.achName), "Pin 2"_w);
    info.pFilter->Release();
}

TEST_F(PinConnection, PinsAreEnumeratedUntilTheirSetChanges) {
    source->addPin();
    CComPtr<IEnumPins> pins;
    ASSERT_EQ(source->EnumPins(&pins), S_OK);
    CComPtr<IPin> two[3];
    ULONG fetched = 9;
    EXPECT_EQ(pins->Next(2, &two[0].p, &fetched), S_OK);
    EXPECT_EQ(fetched, 2u);
    EXPECT_TRUE(isSameObject(two[1], static_cast<IPin*>(&source->pin(1))));
    EXPECT_EQ(pins->Skip(2), S_FALSE);
    CComPtr<IEnumPins> copy;
    ASSERT_EQ(pins->Clone(&copy), S_OK);
    EXPECT_EQ(pins->Next(1, &two[2].p, nullptr), S_OK);
    CComPtr<IPin> rest[2];
    EXPECT_EQ(copy->Next(2, &rest[0].p, &fetched), S_FALSE);
    EXPECT_EQ(fetched, 1u);
    EXPECT_EQ(rest[0].p, two[2].p);

    source->IncrementPinVersion();
    CComPtr<IPin> pin;
    CComPtr<IEnumPins> none;
    EXPECT_EQ(pins->Next(1, &pin.p, &fetched), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(fetched, 0u);
    EXPECT_EQ(pins->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(pins->Clone(&none), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(pins->Reset(), S_OK);
    EXPECT_EQ(pins->Skip(2), S_OK);
    for (auto& held : two) held.Release();
    rest[0].Release();
    source->dropPin();
    source->dropPin();
    EXPECT_EQ(pins->Next(1, &pin.p, nullptr), S_FALSE);
}

TEST_F(PinConnection, MediaTypesAreEnumeratedUntilTheListChanges) {
    output().behaviour.offered = {testType(1), testType(2), testType(3)};
    CComPtr<IEnumMediaTypes> types;
    ASSERT_EQ(output().EnumMediaTypes(&types), S_OK);
    AM_MEDIA_TYPE* two[2] = {};
    ULONG fetched = 0;
    EXPECT_EQ(types->Skip(0xFFFFFFFF), S_FALSE);
    EXPECT_EQ(types->Skip(2), S_OK);
    CComPtr<IEnumMediaTypes> copy;
    ASSERT_EQ(types->Clone(&copy), S_OK);
    EXPECT_EQ(copy->Next(2, two, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 1u);
    EXPECT_TRUE(CMediaType(*two[0]) == testType(3));
    DeleteMediaType(two[0]);

    output().IncrementTypeVersion();
    EXPECT_EQ(types->Next(1, two, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(types->Reset(), S_OK);
    EXPECT_EQ(types->Next(1, two, nullptr), S_OK);
    EXPECT_TRUE(CMediaType(*two[0]) == testType(1));
    DeleteMediaType(two[0]);
}

TEST(PinLifetime, FiltersLiveAsLongAsAnythingOfThemIsHeld) {
    const ObjectCount objects;
    CComPtr<IPin> pin, other;
    CComPtr<IEnumMediaTypes> types;
    {
        const CComPtr<TestSource> source(new TestSource(1));
        const CComPtr<TestSink> sink(new TestSink(1));
        ASSERT_EQ(source->pin().Connect(&sink->pin(), nullptr), S_OK);
        pin = &source->pin();
        sink->pin().EnumMediaTypes(&types);
    }
    ASSERT_EQ(pin->ConnectedTo(&other), S_OK);
    EXPECT_EQ(pin->Disconnect(), S_OK);
    EXPECT_EQ(other->Disconnect(), S_OK);
    other.Release();
    pin.Release();
    AM_MEDIA_TYPE* type = nullptr;
    EXPECT_EQ(types->Next(1, &type, nullptr), S_OK);
    DeleteMediaType(type);
}

}  // namespace
}  // namespace mvrtpfec
