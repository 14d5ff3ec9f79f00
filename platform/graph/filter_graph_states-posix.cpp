// The states and the clock of the filter graph.

#include <algorithm>
#include <chrono>

#include "platform/graph/filter_graph-posix.h"
#include "platform/graph/graph_topology-posix.h"
#include "platform/no_throw.h"

namespace platform {

namespace {

using GraphLock = std::lock_guard<std::recursive_mutex>;

/// From the decision to run to stream time 0, in 100 ns: time for every filter to hear of it.
constexpr REFERENCE_TIME startDelay = 100'000;

/// Calls the filters in order up to the first failure. The last result that isn't S_OK.
template <class Call>
HRESULT callEach(const Filters& filters, Call call) {
    HRESULT result = S_OK;
    for (const CComPtr<IBaseFilter>& filter : filters) {
        const HRESULT one = call(filter.p);
        if (one != S_OK) result = one;
        if (FAILED(one)) break;
    }
    return result;
}

/// Time spent waiting for one thing after another.
class TimeOut {
public:
    explicit TimeOut(DWORD milliseconds) : limit_(milliseconds) {}

    DWORD left() const {
        using std::chrono::milliseconds;
        if (limit_ == INFINITE) return INFINITE;
        const auto gone = std::chrono::duration_cast<milliseconds>(Clock::now() - start_).count();
        return gone >= limit_ ? 0 : limit_ - static_cast<DWORD>(gone);
    }

private:
    using Clock = std::chrono::steady_clock;

    DWORD limit_;
    Clock::time_point start_ = Clock::now();
};

}  // namespace

HRESULT FilterGraph::Pause() {
    return withoutThrowing([&] {
        const GraphLock lock(graphLock_);
        return state_ == State_Paused ? S_OK : pause(order());
    });
}

HRESULT FilterGraph::Run() {
    return Run(REFERENCE_TIME{0});
}

HRESULT FilterGraph::Run(REFERENCE_TIME start) {
    return withoutThrowing([&] {
        const GraphLock lock(graphLock_);
        if (state_ == State_Running) return S_OK;
        const Filters filters = order();
        const HRESULT paused = state_ == State_Stopped ? pause(filters) : S_OK;
        return FAILED(paused) ? paused : run(filters, start);
    });
}

HRESULT FilterGraph::Stop() {
    return withoutThrowing([&] {
        const GraphLock lock(graphLock_);
        return state_ == State_Stopped ? S_OK : stop(order());
    });
}

HRESULT FilterGraph::StopWhenReady() {
    return E_NOTIMPL;
}

HRESULT FilterGraph::pause(const Filters& order) {
    if (state_ == State_Running)
        interruptStreams();
    else
        prepareStreams(order);
    setState(State_Paused);
    const HRESULT result = callEach(order, [](IBaseFilter* filter) { return filter->Pause(); });
    if (FAILED(result)) stop(order);
    return result;
}

void FilterGraph::prepareStreams(const Filters& filters) {
    if (!clockChosen_) SetDefaultSyncSource();
    streamTime_ = 0;
    events_.beginStreams(countRenderers(filters));
}

void FilterGraph::interruptStreams() {
    streamTime_ = std::max<REFERENCE_TIME>(now() - started_, 0);
    events_.resumeStreams();
}

HRESULT FilterGraph::run(const Filters& order, REFERENCE_TIME start) {
    started_ = start != 0 ? start : startTime();
    const HRESULT result = callEach(order, [&](IBaseFilter* filter) { return filter->Run(started_); });
    if (FAILED(result))
        stop(order);
    else
        setState(State_Running);
    return result;
}

HRESULT FilterGraph::stop(const Filters& order) noexcept {
    HRESULT result = S_OK;
    for (const CComPtr<IBaseFilter>& filter : order) {
        const HRESULT one = filter->Stop();
        if (SUCCEEDED(result) && one != S_OK) result = one;
    }
    setState(State_Stopped);
    return result;
}

void FilterGraph::setState(FILTER_STATE state) {
    state_ = state;
    events_.setRunning(state == State_Running);
}

/// All stream times are counted from here; what has gone by before a pause counts as gone.
REFERENCE_TIME FilterGraph::startTime() const {
    return clock_ ? now() + startDelay - streamTime_ : 0;
}

Filters FilterGraph::order() const {
    return downstreamFirst(filters_->snapshot().filters);
}

REFERENCE_TIME FilterGraph::now() const {
    REFERENCE_TIME time = 0;
    if (clock_) clock_->GetTime(&time);
    return time;
}

HRESULT FilterGraph::GetState(LONG milliseconds, OAFilterState* state) {
    FILTER_STATE current = State_Stopped;
    if (state == nullptr) return E_POINTER;
    const HRESULT result = GetState(static_cast<DWORD>(milliseconds), &current);
    *state = current;
    return result;
}

HRESULT FilterGraph::GetState(DWORD milliseconds, FILTER_STATE* state) {
    if (state == nullptr) return E_POINTER;
    return withoutThrowing([&] {
        *state = state_;
        const TimeOut timeOut(milliseconds);
        return callEach(filters_->snapshot().filters, [&](IBaseFilter* filter) {
            FILTER_STATE its = State_Stopped;
            return filter->GetState(timeOut.left(), &its);
        });
    });
}

HRESULT FilterGraph::SetDefaultSyncSource() {
    CComPtr<IReferenceClock> clock;
    const HRESULT result = createSystemClock(&clock);
    return FAILED(result) ? result : SetSyncSource(clock);
}

HRESULT FilterGraph::SetSyncSource(IReferenceClock* clock) {
    return withoutThrowing([&] {
        const GraphLock lock(graphLock_);
        if (state_ != State_Stopped) return VFW_E_NOT_STOPPED;
        clock_ = clock;
        clockChosen_ = true;
        return callEach(filters_->snapshot().filters,
                        [&](IBaseFilter* filter) { return filter->SetSyncSource(clock); });
    });
}

HRESULT FilterGraph::GetSyncSource(IReferenceClock** clock) {
    if (clock == nullptr) return E_POINTER;
    const GraphLock lock(graphLock_);
    return clock_.CopyTo(clock);
}

}  // namespace platform
