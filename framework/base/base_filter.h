#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "framework/base/critical_section.h"
#include "framework/base/unknown.h"
#include "platform/graph/media_graph.h"
#include "platform/threads/light_mutex.h"

namespace mvrtpfec {

class CBasePin;

/// A filter: its state, its place in a graph and the list of its pins, which derived classes own.
///
/// State changes hold the filter lock, and so do the pins' Active, Inactive and Run that they call. The state
/// can be read without a lock at any time. Streaming threads may call NotifyEvent, StreamTime and the state's
/// readers.
class CBaseFilter : public CUnknown, public IBaseFilter {
public:
    /// `lock`, the filter lock, is the derived class's and must outlive the filter's pins; it is not used
    /// before the constructors are done.
    CBaseFilter(const char* name, IUnknown* outer, CCritSec* lock, REFCLSID classId) noexcept;

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;

    STDMETHODIMP GetClassID(CLSID* classId) override;

    /// Makes every connected pin inactive, also after one has failed; the first failure is returned. The
    /// filter is stopped in any case.
    STDMETHODIMP Stop() override;
    /// From stopped makes every connected pin active. When one fails, those before it are made inactive
    /// again, its failure is returned and the filter stays stopped.
    STDMETHODIMP Pause() override;
    /// From stopped pauses first. A failure of a pin's Run is returned and the state stays.
    STDMETHODIMP Run(REFERENCE_TIME start) override;
    STDMETHODIMP GetState(DWORD milliseconds, FILTER_STATE* state) override;
    STDMETHODIMP SetSyncSource(IReferenceClock* clock) override;
    STDMETHODIMP GetSyncSource(IReferenceClock** clock) override;

    STDMETHODIMP EnumPins(IEnumPins** pins) override;
    /// A pin's identifier is its name. VFW_E_NOT_FOUND.
    STDMETHODIMP FindPin(LPCWSTR id, IPin** pin) override;
    STDMETHODIMP QueryFilterInfo(FILTER_INFO* info) override;
    /// No reference is held on the graph, nor on its event sink: a graph takes its filters out before it
    /// goes. The name is copied; it may be null.
    STDMETHODIMP JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
    STDMETHODIMP QueryVendorInfo(LPWSTR* vendorInfo) override;

    /// The set of pins may be asked for on any thread, with and without the filter lock.
    virtual int GetPinCount() = 0;
    /// Null beyond the last pin. The pin stays the filter's; no reference is given.
    virtual CBasePin* GetPin(int index) = 0;
    /// Changes whenever the set of pins does.
    virtual LONG GetPinVersion() { return pinVersion_; }
    void IncrementPinVersion() noexcept { ++pinVersion_; }

    bool IsActive() const noexcept { return !IsStopped(); }
    bool IsStopped() const noexcept { return m_State == State_Stopped; }

    /// Sends an event to the graph, E_NOTIMPL without one. EC_COMPLETE carries this filter as its second
    /// parameter, whatever is given.
    HRESULT NotifyEvent(LONG code, LONG_PTR parameter1, LONG_PTR parameter2);
    /// Not referenced; null outside a graph.
    IFilterGraph* GetFilterGraph() const noexcept;
    /// The time since the start that Run was given. VFW_E_NO_CLOCK.
    HRESULT StreamTime(REFERENCE_TIME& time) const;
    /// Asks the graph to connect the pin anew; E_NOINTERFACE without a graph.
    HRESULT ReconnectPin(IPin* pin);

protected:
    std::atomic<FILTER_STATE> m_State{State_Stopped};
    CCritSec* const m_pLock;

private:
    template <class Operation>
    HRESULT onConnectedPin(int index, Operation&& operation) noexcept;
    HRESULT activatePins();
    HRESULT deactivatePins(int count);

    const CLSID classId_;
    std::atomic<LONG> pinVersion_{1};

    /// Guards what follows; never held while calling out, except to take a reference.
    mutable platform::LightMutex leafLock_;
    std::basic_string<WCHAR> name_;
    IFilterGraph* graph_ = nullptr;
    IMediaEventSink* sink_ = nullptr;
    CComPtr<IReferenceClock> clock_;
    REFERENCE_TIME start_ = 0;
};

}  // namespace mvrtpfec
