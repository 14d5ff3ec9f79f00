// What our own graph does where the system's is free to do otherwise.

#include <limits>
#include <thread>

#include "platform/threads/sync.h"
#include "tests/platform/filter_graph_fixture.h"

namespace mvrtpfec {

namespace {

TEST_F(FilterGraphTest, AFailureLeavesEveryFilterStopped) {
    JournalFilter& source = add("source");
    JournalFilter& sink = add("sink", 0);
    connect(source, sink);
    for (const char* call : {"pause", "run"}) {
        source.onCall(call, [] { return E_ACCESSDENIED; });
        EXPECT_EQ(control_->Run(), E_ACCESSDENIED) << call;
        EXPECT_EQ(sink.state(), State_Stopped) << call;
        EXPECT_EQ(state(), State_Stopped) << call;
    }
}

TEST_F(FilterGraphTest, AnErrorEndsTheWaitForTheEnd) {
    JournalFilter& filter = add("filter", 0);
    ASSERT_EQ(control_->Run(), S_OK);
    std::thread failing([&] { filter.send(EC_ERRORABORT); });
    LONG code = -1;
    EXPECT_EQ(waitForEnd(patience, code), S_OK);
    EXPECT_EQ(code, EC_ERRORABORT);
    failing.join();
}

TEST_F(FilterGraphTest, OnlyFiltersOfTheGraphAreConnected) {
    JournalFilter& source = add("source");
    const CComPtr<IBaseFilter> foreign(new JournalFilter("foreign", 0, journal_));
    EXPECT_LT(graph_->ConnectDirect(&source.pin(), &static_cast<JournalFilter*>(foreign.p)->input(), nullptr),
              0);
}

TEST_F(FilterGraphTest, TheClockRefusesATimeThatNeverComesAndGoesAtOnce) {
    CComPtr<IReferenceClock> clock;
    ASSERT_EQ(platform::createSystemClock(&clock), S_OK);
    HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    DWORD_PTR cookie = 0;
    constexpr auto never = std::numeric_limits<REFERENCE_TIME>::max();
    EXPECT_EQ(clock->AdviseTime(never, 0, reinterpret_cast<HEVENT>(event), &cookie), E_INVALIDARG);
    ASSERT_EQ(clock->AdviseTime(never - 1, 0, reinterpret_cast<HEVENT>(event), &cookie), S_OK);
    clock.Release();
    CloseHandle(event);
}

TEST_F(FilterGraphTest, ACycleRunsAndStops) {
    JournalFilter& filter = add("filter");
    connect(filter, filter);
    ASSERT_EQ(control_->Run(), S_OK);
    EXPECT_EQ(filter.state(), State_Running);
    ASSERT_EQ(control_->Stop(), S_OK);
    EXPECT_EQ(journal_, (Journal{"filter pause", "filter run", "filter stop"}));
}

TEST_F(FilterGraphTest, TheEndIsTheEndOfEveryRenderer) {
    JournalFilter& source = add("source", 2);
    JournalFilter& first = add("first", 0);
    JournalFilter& second = add("second", 1);
    connect(source, first, 0);
    connect(source, second, 1);
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(control_->Run(), S_OK);
        LONG code = 0;
        first.send(EC_COMPLETE);
        first.send(EC_COMPLETE);
        EXPECT_EQ(waitForEnd(10, code), E_ABORT);
        second.send(EC_COMPLETE);
        if (round == 0) {
            EXPECT_EQ(waitForEnd(patience, code), S_OK);
            EXPECT_EQ(code, EC_COMPLETE);
        }
        ASSERT_EQ(control_->Stop(), S_OK);
    }
    ASSERT_EQ(control_->Run(), S_OK);
    LONG code = 0;
    EXPECT_EQ(waitForEnd(10, code), E_ABORT) << "the end of an earlier run";
}

TEST_F(FilterGraphTest, AFloodOfEventsIsBoundedAndHidesNoEnd) {
    JournalFilter& filter = add("filter", 0);
    ASSERT_EQ(control_->Run(), S_OK);
    for (int i = 0; i < 100'000; ++i) filter.send(0x8000);
    filter.send(EC_COMPLETE);
    int events = 0;
    LONG code = 0;
    LONG_PTR first = 0;
    LONG_PTR second = 0;
    while (events_->GetEvent(&code, &first, &second, 0) == S_OK && code != EC_COMPLETE) ++events;
    EXPECT_EQ(code, EC_COMPLETE);
    EXPECT_LT(events, 2000);
}

TEST_F(FilterGraphTest, AConnectedFilterStaysWhileTheGraphIsNotStopped) {
    JournalFilter& source = add("source");
    connect(source, add("sink", 0));
    ASSERT_EQ(control_->Pause(), S_OK);
    EXPECT_EQ(graph_->RemoveFilter(&source), VFW_E_NOT_STOPPED);
}

}  // namespace

}  // namespace mvrtpfec
