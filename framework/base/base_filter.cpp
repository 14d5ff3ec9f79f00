#include "framework/base/base_filter.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "framework/base/base_pin.h"
#include "framework/base/enum_pins.h"
#include "framework/base/hand_out.h"
#include "framework/guarded_entry.h"

namespace mvrtpfec {

CBaseFilter::CBaseFilter(const char* name, IUnknown* outer, CCritSec* lock, REFCLSID classId) noexcept
    : CUnknown(name, outer), m_pLock(lock), classId_(classId) {}

HRESULT CBaseFilter::NonDelegatingQueryInterface(REFIID riid, void** object) {
    if (riid == IID_IBaseFilter || riid == IID_IMediaFilter || riid == IID_IPersist)
        return GetInterface(static_cast<IBaseFilter*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(riid, object);
}

HRESULT CBaseFilter::GetClassID(CLSID* classId) {
    if (classId == nullptr) return E_POINTER;
    *classId = classId_;
    return S_OK;
}

template <class Operation>
HRESULT CBaseFilter::onConnectedPin(int index, Operation&& operation) noexcept {
    return guardedEntry([&] {
        CBasePin* pin = GetPin(index);
        return pin != nullptr && pin->IsConnected() ? operation(*pin) : S_OK;
    });
}

HRESULT CBaseFilter::activatePins() {
    const int count = GetPinCount();
    for (int i = 0; i < count; ++i) {
        const HRESULT result = onConnectedPin(i, [](CBasePin& pin) { return pin.Active(); });
        if (FAILED(result)) {
            deactivatePins(i);
            return result;
        }
    }
    return S_OK;
}

HRESULT CBaseFilter::deactivatePins(int count) {
    HRESULT first = S_OK;
    for (int i = 0; i < count; ++i) {
        const HRESULT result = onConnectedPin(i, [](CBasePin& pin) { return pin.Inactive(); });
        if (FAILED(result) && SUCCEEDED(first)) first = result;
    }
    return first;
}

HRESULT CBaseFilter::Stop() {
    return guardedEntry([&] {
        const CAutoLock lock(m_pLock);
        const HRESULT result = IsStopped() ? S_OK : deactivatePins(GetPinCount());
        m_State = State_Stopped;
        return result;
    });
}

HRESULT CBaseFilter::Pause() {
    return guardedEntry([&] {
        const CAutoLock lock(m_pLock);
        const HRESULT result = IsStopped() ? activatePins() : S_OK;
        if (SUCCEEDED(result)) m_State = State_Paused;
        return result;
    });
}

HRESULT CBaseFilter::Run(REFERENCE_TIME start) {
    return guardedEntry([&] {
        const CAutoLock lock(m_pLock);
        {
            const std::lock_guard leaf(leafLock_);
            start_ = start;
        }
        if (IsStopped()) {
            const HRESULT result = Pause();
            if (FAILED(result)) return result;
        }
        const int count = m_State == State_Running ? 0 : GetPinCount();
        for (int i = 0; i < count; ++i) {
            const HRESULT result = onConnectedPin(i, [&](CBasePin& pin) { return pin.Run(start); });
            if (FAILED(result)) return result;
        }
        m_State = State_Running;
        return S_OK;
    });
}

HRESULT CBaseFilter::GetState(DWORD, FILTER_STATE* state) {
    if (state == nullptr) return E_POINTER;
    *state = m_State;
    return S_OK;
}

HRESULT CBaseFilter::SetSyncSource(IReferenceClock* clock) {
    CComPtr<IReferenceClock> exchanged(clock);  // Releases the previous one after the lock.
    const std::lock_guard leaf(leafLock_);
    std::swap(clock_.p, exchanged.p);
    return S_OK;
}

HRESULT CBaseFilter::GetSyncSource(IReferenceClock** clock) {
    const std::lock_guard leaf(leafLock_);
    return clock_.CopyTo(clock);
}

HRESULT CBaseFilter::EnumPins(IEnumPins** pins) {
    return guardedEntry([&] { return HandOutNew<CEnumPins>(pins, this); });
}

HRESULT CBaseFilter::FindPin(LPCWSTR id, IPin** pin) {
    if (id == nullptr || pin == nullptr) return E_POINTER;
    *pin = nullptr;
    return guardedEntry([&] {
        const std::basic_string_view<WCHAR> wanted(id);
        const int count = GetPinCount();
        for (int i = 0; i < count; ++i) {
            CBasePin* candidate = GetPin(i);
            if (candidate == nullptr || wanted != candidate->Name()) continue;
            candidate->AddRef();
            *pin = candidate;
            return S_OK;
        }
        return VFW_E_NOT_FOUND;
    });
}

HRESULT CBaseFilter::QueryFilterInfo(FILTER_INFO* info) {
    if (info == nullptr) return E_POINTER;
    const std::lock_guard leaf(leafLock_);
    const std::size_t length = name_.copy(info->achName, MAX_FILTER_NAME - 1);
    info->achName[length] = 0;
    info->pGraph = graph_;
    if (graph_ != nullptr) graph_->AddRef();
    return S_OK;
}

HRESULT CBaseFilter::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) {
    return guardedEntry([&] {
        std::basic_string<WCHAR> copy;
        if (graph != nullptr && name != nullptr) copy = name;
        const auto sink = queryFor<IMediaEventSink>(graph, IID_IMediaEventSink);
        const std::lock_guard leaf(leafLock_);
        graph_ = graph;
        sink_ = sink;
        name_.swap(copy);
        return S_OK;
    });
}

HRESULT CBaseFilter::QueryVendorInfo(LPWSTR*) {
    return E_NOTIMPL;
}

HRESULT CBaseFilter::NotifyEvent(LONG code, LONG_PTR parameter1, LONG_PTR parameter2) {
    CComPtr<IMediaEventSink> sink;
    {
        const std::lock_guard leaf(leafLock_);
        sink = sink_;
    }
    if (sink == nullptr) return E_NOTIMPL;
    if (code == EC_COMPLETE) parameter2 = reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(this));
    return sink->Notify(code, parameter1, parameter2);
}

IFilterGraph* CBaseFilter::GetFilterGraph() const noexcept {
    const std::lock_guard leaf(leafLock_);
    return graph_;
}

HRESULT CBaseFilter::StreamTime(REFERENCE_TIME& time) const {
    CComPtr<IReferenceClock> clock;
    REFERENCE_TIME start = 0;
    {
        const std::lock_guard leaf(leafLock_);
        clock = clock_;
        start = start_;
    }
    if (clock == nullptr) return VFW_E_NO_CLOCK;
    const HRESULT result = clock->GetTime(&time);
    if (FAILED(result)) return result;
    time -= start;
    // S_FALSE, a clock that hasn't moved since it was last read, is no news to who asks for the stream's
    // time.
    return S_OK;
}

HRESULT CBaseFilter::ReconnectPin(IPin* pin) {
    CComPtr<IFilterGraph> graph;
    {
        const std::lock_guard leaf(leafLock_);
        graph = graph_;
    }
    return graph == nullptr ? E_NOINTERFACE : graph->Reconnect(pin);
}

}  // namespace mvrtpfec
