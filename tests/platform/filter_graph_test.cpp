#include <thread>

#include "platform/threads/sync.h"
#include "platform/wide_literal.h"
#include "tests/platform/filter_graph_fixture.h"

namespace mvrtpfec {

namespace {

using platform::operator""_w;

TEST_F(FilterGraphTest, StateChangesGoUpstream) {
    JournalFilter& middle = add("middle");
    JournalFilter& sink = add("sink", 0);
    JournalFilter& source = add("source");
    connect(middle, sink);
    connect(source, middle);

    ASSERT_GE(control_->Run(), 0);
    EXPECT_EQ(state(), State_Running);
    ASSERT_EQ(control_->Stop(), S_OK);
    EXPECT_EQ(state(), State_Stopped);
    expectOrder(journal_, {"sink pause", "middle pause", "source pause", "sink run", "middle run",
                           "source run", "sink stop", "middle stop", "source stop"});
    EXPECT_EQ(sink.state(), State_Stopped);
    EXPECT_EQ(sink.started(), source.started());
}

TEST_F(FilterGraphTest, StreamTimeStandsStillDuringAPause) {
    JournalFilter& filter = add("filter", 0);
    ASSERT_EQ(graph_->SetDefaultSyncSource(), S_OK);
    CComPtr<IReferenceClock> clock;
    ASSERT_EQ(filter.GetSyncSource(&clock), S_OK);
    ASSERT_TRUE(clock);
    REFERENCE_TIME before = 0;
    clock->GetTime(&before);

    ASSERT_GE(control_->Run(), 0);
    const REFERENCE_TIME first = filter.started();
    EXPECT_GT(first, before);
    ASSERT_GE(control_->Pause(), 0);
    Sleep(50);
    ASSERT_GE(control_->Run(), 0);
    EXPECT_GE(filter.started() - first, 400'000);
}

TEST_F(FilterGraphTest, AFilterThatFailsFailsTheStateChange) {
    JournalFilter& source = add("source");
    connect(source, add("sink", 0));
    source.onCall("pause", [] { return E_ACCESSDENIED; });
    EXPECT_EQ(control_->Run(), E_ACCESSDENIED);
    source.onCall("pause", nullptr);
    ASSERT_EQ(control_->Stop(), S_OK);
    EXPECT_GE(control_->Run(), 0);
    EXPECT_EQ(source.state(), State_Running);
}

TEST_F(FilterGraphTest, AWaitForTheEndHasItsTime) {
    add("filter", 0);
    LONG code = -1;
    EXPECT_EQ(waitForEnd(0, code), VFW_E_WRONG_STATE);
    ASSERT_GE(control_->Run(), 0);
    EXPECT_EQ(waitForEnd(20, code), E_ABORT);
    EXPECT_EQ(code, 0);
}

TEST_F(FilterGraphTest, EventsComeInOrderAndSignalTheirHandle) {
    JournalFilter& filter = add("filter", 0);
    OAEVENT handle = 0;
    ASSERT_EQ(events_->GetEventHandle(&handle), S_OK);
    ASSERT_GE(control_->Run(), 0);
    LONG code = 0;
    LONG_PTR first = 0;
    LONG_PTR second = 0;
    while (events_->GetEvent(&code, &first, &second, 0) == S_OK)
        events_->FreeEventParams(code, first, second);
    constexpr LONG ownEvent = 0x8000;
    filter.send(ownEvent);
    filter.send(ownEvent + 1);
    EXPECT_EQ(WaitForSingleObject(reinterpret_cast<HANDLE>(handle), 5000), WAIT_OBJECT_0);
    ASSERT_EQ(events_->GetEvent(&code, &first, &second, 0), S_OK);
    EXPECT_EQ(code, ownEvent);
    ASSERT_EQ(events_->GetEvent(&code, &first, &second, 0), S_OK);
    EXPECT_EQ(code, ownEvent + 1);
    EXPECT_EQ(events_->GetEvent(&code, &first, &second, 0), E_ABORT);
    EXPECT_EQ(WaitForSingleObject(reinterpret_cast<HANDLE>(handle), 0), WAIT_TIMEOUT);
}

TEST_F(FilterGraphTest, AStateChangeMayWaitForAThreadThatSendsAnEvent) {
    JournalFilter& filter = add("filter", 0);
    filter.onCall("stop", [&] {
        std::thread streaming([&] { filter.send(EC_USERABORT); });
        streaming.join();
        return S_OK;
    });
    ASSERT_GE(control_->Run(), 0);
    EXPECT_EQ(control_->Stop(), S_OK);
}

TEST_F(FilterGraphTest, ARemovedFilterIsConnectedNoMoreAndHoldsNothing) {
    JournalFilter& source = add("source");
    JournalFilter& middle = add("middle");
    JournalFilter& sink = add("sink", 0);
    connect(source, middle);
    connect(middle, sink);
    const CComPtr<IBaseFilter> reference(&middle);

    ASSERT_EQ(graph_->RemoveFilter(&middle), S_OK);
    for (IPin* pin : {static_cast<IPin*>(&source.pin()), static_cast<IPin*>(&middle.input()),
                      static_cast<IPin*>(&middle.pin()), static_cast<IPin*>(&sink.input())}) {
        CComPtr<IPin> peer;
        EXPECT_EQ(pin->ConnectedTo(&peer), VFW_E_NOT_CONNECTED);
    }
    FILTER_INFO info{};
    ASSERT_EQ(middle.QueryFilterInfo(&info), S_OK);
    EXPECT_EQ(info.pGraph, nullptr);
    EXPECT_LT(graph_->RemoveFilter(&middle), 0);
}

TEST_F(FilterGraphTest, FiltersAreFoundByTheirNames) {
    JournalFilter& unnamed = add("unnamed");
    const CComPtr<IBaseFilter> twin(new JournalFilter("twin", 0, journal_));
    const CComPtr<IBaseFilter> other(new JournalFilter("other", 0, journal_));
    ASSERT_EQ(graph_->AddFilter(twin, "Twin"_w), S_OK);
    EXPECT_EQ(graph_->AddFilter(other, "Twin"_w), VFW_S_DUPLICATE_NAME);
    for (IBaseFilter* filter : {static_cast<IBaseFilter*>(&unnamed), twin.p, other.p}) {
        FILTER_INFO info{};
        ASSERT_EQ(filter->QueryFilterInfo(&info), S_OK);
        info.pGraph->Release();
        CComPtr<IBaseFilter> found;
        ASSERT_EQ(graph_->FindFilterByName(info.achName, &found), S_OK);
        EXPECT_TRUE(isSameObject(found, filter));
    }
    CComPtr<IBaseFilter> none;
    EXPECT_EQ(graph_->FindFilterByName("Nobody"_w, &none), VFW_E_NOT_FOUND);
}

TEST_F(FilterGraphTest, EnumerationGoesNewestFirstAndNoticesChanges) {
    JournalFilter& oldest = add("oldest");
    JournalFilter& middle = add("middle");
    CComPtr<IEnumFilters> filters;
    ASSERT_EQ(graph_->EnumFilters(&filters), S_OK);
    CComPtr<IBaseFilter> filter;
    ASSERT_EQ(filters->Next(1, &filter, nullptr), S_OK);
    EXPECT_TRUE(isSameObject(filter, &middle));

    add("newest");
    filter.Release();
    EXPECT_EQ(filters->Next(1, &filter, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
    ASSERT_EQ(filters->Reset(), S_OK);
    ASSERT_EQ(filters->Skip(2), S_OK);
    IBaseFilter* last[2] = {};
    ULONG fetched = 0;
    EXPECT_EQ(filters->Next(2, last, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 1u);
    EXPECT_TRUE(isSameObject(last[0], &oldest));
    last[0]->Release();
}

TEST_F(FilterGraphTest, AGraphLetsGoOfRunningFiltersWhenItEnds) {
    JournalFilter& source = add("source");
    JournalFilter& sink = add("sink", 0);
    connect(source, sink);
    const CComPtr<IBaseFilter> reference(&sink);
    ASSERT_GE(control_->Run(), 0);
    releaseGraph();
    EXPECT_EQ(sink.state(), State_Stopped);
    CComPtr<IPin> peer;
    EXPECT_EQ(sink.input().ConnectedTo(&peer), VFW_E_NOT_CONNECTED);
}

}  // namespace

}  // namespace mvrtpfec
