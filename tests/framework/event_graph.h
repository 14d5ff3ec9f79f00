#pragma once

#include "framework/base/unknown.h"
#include "platform/graph/media_graph.h"

namespace mvrtpfec {

/// A graph that records events and nothing else; filters join it by hand.
class EventGraph final : public CUnknown, public IFilterGraph, public IMediaEventSink {
public:
    EventGraph() : CUnknown("EventGraph", nullptr) {}

    LONG code = 0;
    LONG_PTR parameter1 = 0;
    LONG_PTR parameter2 = 0;
    IPin* reconnected = nullptr;

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override {
        if (riid == IID_IMediaEventSink) return GetInterface(static_cast<IMediaEventSink*>(this), object);
        return CUnknown::NonDelegatingQueryInterface(riid, object);
    }
    STDMETHODIMP Notify(LONG event, LONG_PTR one, LONG_PTR two) override {
        code = event;
        parameter1 = one;
        parameter2 = two;
        return S_OK;
    }
    STDMETHODIMP AddFilter(IBaseFilter*, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP RemoveFilter(IBaseFilter*) override { return E_NOTIMPL; }
    STDMETHODIMP EnumFilters(IEnumFilters**) override { return E_NOTIMPL; }
    STDMETHODIMP FindFilterByName(LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
    STDMETHODIMP ConnectDirect(IPin*, IPin*, const AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP Reconnect(IPin* pin) override {
        reconnected = pin;
        return S_OK;
    }
    STDMETHODIMP Disconnect(IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP SetDefaultSyncSource() override { return E_NOTIMPL; }
};

}  // namespace mvrtpfec
