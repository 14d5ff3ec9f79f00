#include <stdexcept>

#include <gtest/gtest.h>

#include "platform/component/component_runtime.h"
#include "platform/graph/media_graph.h"
#include "platform/wide_literal.h"
#include "tests/framework/event_graph.h"
#include "tests/shared/test_filters.h"

namespace mvrtpfec {
namespace {

using platform::operator""_w;

class FilterState : public ::testing::Test {
protected:
    /// The third pin stays unconnected.
    void SetUp() override {
        for (std::size_t i : {0u, 1u}) ASSERT_EQ(source->pin(i).Connect(&sink->pin(i), nullptr), S_OK);
    }
    void failAt(std::size_t pin, std::function<HRESULT()> PinBehaviour::*place, HRESULT result) {
        source->pin(pin).behaviour.*place = [result] { return result; };
    }
    FILTER_STATE state() {
        FILTER_STATE now = State_Running;
        EXPECT_EQ(source->GetState(0, &now), S_OK);
        return now;
    }
    bool committed(std::size_t pin) {
        CComPtr<IMediaSample> sample;
        return SUCCEEDED(source->pin(pin).GetDeliveryBuffer(&sample, nullptr, nullptr, AM_GBF_NOWAIT));
    }
    PinCalls& calls(std::size_t pin) { return source->pin(pin).calls; }

    const platform::ComponentRuntime runtime_;
    Held<TestSource> source{3};
    Held<TestSink> sink{2};
};

TEST_F(FilterState, PassesThroughPausedBothWaysAndTellsConnectedPinsOnly) {
    EXPECT_EQ(state(), State_Stopped);
    EXPECT_EQ(source->Run(1234), S_OK);
    EXPECT_EQ(state(), State_Running);
    EXPECT_EQ(calls(0).active, 1);
    EXPECT_EQ(calls(1).runStart, 1234);
    EXPECT_EQ(calls(2).active + calls(2).run, 0);
    EXPECT_TRUE(committed(0));

    EXPECT_EQ(source->Run(5), S_OK);
    EXPECT_EQ(source->Pause(), S_OK);
    EXPECT_EQ(state(), State_Paused);
    EXPECT_TRUE(source->IsActive());
    EXPECT_EQ(source->Run(6), S_OK);
    EXPECT_EQ(calls(0).active, 1);
    EXPECT_EQ(calls(0).run, 2);

    EXPECT_EQ(source->Stop(), S_OK);
    EXPECT_EQ(source->Stop(), S_OK);
    EXPECT_TRUE(source->IsStopped());
    EXPECT_EQ(calls(0).inactive, 1);
    EXPECT_EQ(calls(2).inactive, 0);
    EXPECT_FALSE(committed(0));
}

TEST_F(FilterState, AFailedActivationLeavesEverythingStopped) {
    failAt(1, &PinBehaviour::onActive, VFW_E_NO_CLOCK);
    EXPECT_EQ(source->Run(0), VFW_E_NO_CLOCK);
    EXPECT_EQ(state(), State_Stopped);
    EXPECT_EQ(calls(0).active, 1);
    EXPECT_EQ(calls(0).inactive, 1);
    EXPECT_FALSE(committed(0));
    source->pin(1).behaviour.onActive = []() -> HRESULT { throw std::runtime_error("fault"); };
    EXPECT_EQ(source->Pause(), E_FAIL);
    EXPECT_EQ(state(), State_Stopped);
}

TEST_F(FilterState, StopGoesOnAfterAFailureAndTellsTheFirst) {
    ASSERT_EQ(source->Pause(), S_OK);
    failAt(0, &PinBehaviour::onInactive, VFW_E_NO_CLOCK);
    failAt(1, &PinBehaviour::onInactive, E_ABORT);
    EXPECT_EQ(source->Stop(), VFW_E_NO_CLOCK);
    EXPECT_EQ(state(), State_Stopped);
    EXPECT_EQ(calls(1).inactive, 1);
    EXPECT_FALSE(committed(1));
}

TEST_F(FilterState, StreamTimeCountsFromTheStartOfRunning) {
    REFERENCE_TIME time = 0;
    CComPtr<IReferenceClock> clock;
    EXPECT_EQ(source->StreamTime(time), VFW_E_NO_CLOCK);
    EXPECT_EQ(source->GetSyncSource(&clock), S_OK);
    EXPECT_EQ(clock.p, nullptr);
    ASSERT_EQ(platform::createSystemClock(&clock), S_OK);
    ASSERT_EQ(source->SetSyncSource(clock), S_OK);
    constexpr REFERENCE_TIME hour = 36'000'000'000;
    clock->GetTime(&time);
    source->Run(time - hour);
    EXPECT_EQ(source->StreamTime(time), S_OK);
    EXPECT_GE(time, hour);
    EXPECT_LT(time, 2 * hour);
    CComPtr<IReferenceClock> own;
    EXPECT_EQ(source->GetSyncSource(&own), S_OK);
    EXPECT_EQ(own.p, clock.p);
}

TEST_F(FilterState, AGraphIsNamedAndToldEventsButNotHeld) {
    EXPECT_EQ(source->NotifyEvent(EC_COMPLETE, S_OK, 0), E_NOTIMPL);
    EXPECT_EQ(source->ReconnectPin(&source->pin()), E_NOINTERFACE);

    CComPtr<EventGraph> graph(new EventGraph);
    const std::basic_string<WCHAR> longName(MAX_FILTER_NAME + 10, 'n');
    ASSERT_EQ(source->JoinFilterGraph(graph, longName.c_str()), S_OK);
    FILTER_INFO info{};
    ASSERT_EQ(source->QueryFilterInfo(&info), S_OK);
    EXPECT_EQ(info.pGraph, graph.p);
    EXPECT_EQ(std::basic_string_view<WCHAR>(info.achName).size(), MAX_FILTER_NAME - 1);
    EXPECT_EQ(info.pGraph->Release(), 1u);

    EXPECT_EQ(source->NotifyEvent(EC_COMPLETE, S_OK, 0), S_OK);
    EXPECT_EQ(graph->code, EC_COMPLETE);
    EXPECT_EQ(graph->parameter2, reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(source.get())));
    EXPECT_EQ(source->NotifyEvent(EC_USERABORT, 3, 4), S_OK);
    EXPECT_EQ(graph->parameter1, 3);
    EXPECT_EQ(graph->parameter2, 4);
    EXPECT_EQ(source->ReconnectPin(&source->pin()), S_OK);
    EXPECT_EQ(graph->reconnected, &source->pin());

    ASSERT_EQ(source->JoinFilterGraph(nullptr, nullptr), S_OK);
    EXPECT_EQ(source->GetFilterGraph(), nullptr);
    EXPECT_EQ(source->NotifyEvent(EC_USERABORT, 0, 0), E_NOTIMPL);
    ASSERT_EQ(source->QueryFilterInfo(&info), S_OK);
    EXPECT_EQ(info.achName[0], 0);
}

}  // namespace
}  // namespace mvrtpfec
