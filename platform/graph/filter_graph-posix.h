#pragma once

#include <memory>
#include <mutex>

#include "platform/component/counted.h"
#include "platform/graph/event_queue-posix.h"
#include "platform/graph/filter_list-posix.h"
#include "platform/graph/media_graph.h"

namespace platform {

/// A small filter graph: it holds its filters (they don't hold it), connects pins as it is told and takes all
/// filters through a state change, downstream first.
///
/// The graph lock is held during changes of state and topology, while filters and pins are called; filters
/// may call back on the same thread. Events and the filter list have leaf locks of their own, so any thread
/// may send or wait for events, look filters up or ask for the state meanwhile.
///
/// A filter that fails a state change leaves the whole graph stopped. Filters added, and connections made,
/// while the graph isn't stopped take part from the next state change on. A graph that is destroyed stops,
/// disconnects and lets go of all filters.
class FilterGraph final
    : public Counted<IGraphBuilder, IMediaControl, IMediaEvent, IMediaEventSink, IMediaFilter> {
public:
    /// Throws std::bad_alloc.
    FilterGraph();

    STDMETHODIMP QueryInterface(REFIID riid, void** object) override;

    /// VFW_S_DUPLICATE_NAME when the name is in use and was changed; without a name one is made up. E_FAIL
    /// for a filter that is in the graph already.
    STDMETHODIMP AddFilter(IBaseFilter* filter, LPCWSTR name) override;
    /// Breaks the filter's connections first. VFW_E_NOT_STOPPED unless the graph is stopped.
    STDMETHODIMP RemoveFilter(IBaseFilter* filter) override;
    STDMETHODIMP EnumFilters(IEnumFilters** filters) override;
    STDMETHODIMP FindFilterByName(LPCWSTR name, IBaseFilter** filter) override;
    STDMETHODIMP ConnectDirect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) override;
    /// At once, with the connection's media type. A pin must not call it while it is being connected.
    STDMETHODIMP Reconnect(IPin* pin) override;
    /// Of this end alone.
    STDMETHODIMP Disconnect(IPin* pin) override;
    STDMETHODIMP SetDefaultSyncSource() override;

    /// ConnectDirect; no filters are put in between.
    STDMETHODIMP Connect(IPin* output, IPin* input) override;
    // Not offered: E_NOTIMPL, as StopWhenReady.
    STDMETHODIMP Render(IPin* output) override;
    STDMETHODIMP RenderFile(LPCWSTR file, LPCWSTR playList) override;
    STDMETHODIMP AddSourceFilter(LPCWSTR file, LPCWSTR name, IBaseFilter** filter) override;
    STDMETHODIMP SetLogFile(DWORD_PTR file) override;
    STDMETHODIMP Abort() override;
    STDMETHODIMP ShouldOperationContinue() override;

    /// S_FALSE while filters are on their way.
    STDMETHODIMP Run() override;
    STDMETHODIMP Pause() override;
    STDMETHODIMP Stop() override;
    STDMETHODIMP GetState(LONG milliseconds, OAFilterState* state) override;
    STDMETHODIMP StopWhenReady() override;

    STDMETHODIMP GetEventHandle(OAEVENT* event) override;
    STDMETHODIMP GetEvent(LONG* code, LONG_PTR* parameter1, LONG_PTR* parameter2, LONG milliseconds) override;
    STDMETHODIMP WaitForCompletion(LONG milliseconds, LONG* code) override;
    STDMETHODIMP FreeEventParams(LONG code, LONG_PTR parameter1, LONG_PTR parameter2) override;
    STDMETHODIMP Notify(LONG code, LONG_PTR parameter1, LONG_PTR parameter2) override;

    STDMETHODIMP GetClassID(CLSID* classId) override;
    /// `start` 0: as soon as possible, going on in stream time after a pause.
    STDMETHODIMP Run(REFERENCE_TIME start) override;
    STDMETHODIMP GetState(DWORD milliseconds, FILTER_STATE* state) override;
    /// Only while stopped. Null for no clock; without this call the graph takes the system clock when it
    /// first starts.
    STDMETHODIMP SetSyncSource(IReferenceClock* clock) override;
    STDMETHODIMP GetSyncSource(IReferenceClock** clock) override;

private:
    ~FilterGraph() override;

    HRESULT add(IBaseFilter* filter, LPCWSTR name);
    void letGo(IBaseFilter* filter) noexcept;
    HRESULT connect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type);
    HRESULT pause(const Filters& order);
    HRESULT run(const Filters& order, REFERENCE_TIME start);
    HRESULT stop(const Filters& order) noexcept;
    void prepareStreams(const Filters& filters);
    void interruptStreams();
    void setState(FILTER_STATE state);
    Filters order() const;
    REFERENCE_TIME now() const;
    REFERENCE_TIME startTime() const;

    std::recursive_mutex graphLock_;
    std::shared_ptr<FilterList> filters_;
    EventQueue events_;
    CComPtr<IReferenceClock> clock_;
    bool clockChosen_ = false;
    std::atomic<FILTER_STATE> state_{State_Stopped};
    REFERENCE_TIME started_ = 0;     ///< by the clock, stream time 0
    REFERENCE_TIME streamTime_ = 0;  ///< gone by before the pause
};

}  // namespace platform
