#include "framework/sync/sync_input_pin.h"

#include "framework/base/base_filter.h"
#include "platform/graph/media_graph.h"

namespace mvrtpfec {

namespace {

std::uint64_t readClock(const BYTE* bytes) noexcept {
    std::uint64_t clock = 0;
    for (int i = syncSampleSize; i-- > 0;) clock = clock << 8 | bytes[i];
    return clock;
}

}  // namespace

CSyncInputPin::CSyncInputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* result,
                             LPCWSTR name, std::uint64_t clockModulus, std::uint64_t clockRate)
    : CBaseInputPin(objectName, filter, lock, result, name), synchronizer_(clockRate, clockModulus) {}

HRESULT CSyncInputPin::GetMediaType(int position, CMediaType* type) {
    if (position != 0) return position < 0 ? E_INVALIDARG : VFW_S_NO_MORE_ITEMS;
    if (type == nullptr) return E_POINTER;
    *type = CMediaType(MEDIATYPE_Sync, MEDIASUBTYPE_Sync);
    return S_OK;
}

STDMETHODIMP CSyncInputPin::Receive(IMediaSample* sample) {
    HRESULT result = CBaseInputPin::Receive(sample);
    if (result != S_OK) return result;
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    result = sample->GetTime(&start, &stop);
    if (FAILED(result)) return result;
    BYTE* bytes = nullptr;
    result = sample->GetPointer(&bytes);
    if (FAILED(result)) return result;
    if (sample->GetActualDataLength() != syncSampleSize) return E_FAIL;
    const bool wasSynchronized = synchronizer_.IsSynchronized();
    synchronizer_.SetReference(readClock(bytes), start);
    return wasSynchronized ? S_OK : tellGraph();
}

HRESULT CSyncInputPin::tellGraph() {
    IFilterGraph* const graph = m_pFilter->GetFilterGraph();
    if (graph == nullptr) return VFW_E_NOT_IN_GRAPH;
    CComPtr<IMediaEventSink> sink;
    HRESULT result = graph->QueryInterface(IID_IMediaEventSink, reinterpret_cast<void**>(&sink));
    if (FAILED(result)) return result;
    result = sink->Notify(EC_SYNC_READY, 0, 0);
    return FAILED(result) ? result : S_OK;
}

HRESULT CSyncInputPin::Active() {
    // A Receive that was under way when the filter stopped may have left a reference.
    synchronizer_.ResetReference();
    return CBaseInputPin::Active();
}

HRESULT CSyncInputPin::Inactive() {
    synchronizer_.ResetReference();
    return CBaseInputPin::Inactive();
}

}  // namespace mvrtpfec
