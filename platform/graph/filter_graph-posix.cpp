#include "platform/graph/filter_graph-posix.h"

#include "platform/graph/filter_enumeration-posix.h"
#include "platform/graph/graph_topology-posix.h"
#include "platform/no_throw.h"

namespace platform {

namespace {

constexpr CLSID CLSID_FilterGraph{
    0xE436EBB3, 0x524F, 0x11CE, {0x9F, 0x53, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};

using GraphLock = std::lock_guard<std::recursive_mutex>;

}  // namespace

HRESULT createFilterGraph(IGraphBuilder** graph) noexcept {
    if (graph == nullptr) return E_POINTER;
    *graph = nullptr;
    return withoutThrowing([&] {
        *graph = new FilterGraph;  // NOLINT(cppcoreguidelines-owning-memory)
        return S_OK;
    });
}

FilterGraph::FilterGraph() : filters_(std::make_shared<FilterList>()) {}

FilterGraph::~FilterGraph() {
    FilterGraph::Stop();
    for (;;) {
        const CComPtr<IBaseFilter> filter = filters_->newest();
        if (!filter) break;
        letGo(filter);
    }
}

HRESULT FilterGraph::QueryInterface(REFIID riid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (riid == IID_IUnknown || riid == IID_IFilterGraph || riid == IID_IGraphBuilder)
        *object = static_cast<IGraphBuilder*>(this);
    else if (riid == IID_IMediaControl)
        *object = static_cast<IMediaControl*>(this);
    else if (riid == IID_IMediaEvent)
        *object = static_cast<IMediaEvent*>(this);
    else if (riid == IID_IMediaEventSink)
        *object = static_cast<IMediaEventSink*>(this);
    else if (riid == IID_IMediaFilter || riid == IID_IPersist)
        *object = static_cast<IMediaFilter*>(this);
    else
        return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

HRESULT FilterGraph::AddFilter(IBaseFilter* filter, LPCWSTR name) {
    if (filter == nullptr) return E_POINTER;
    return withoutThrowing([&] {
        const GraphLock lock(graphLock_);
        return filters_->contains(filter) ? E_FAIL : add(filter, name);
    });
}

HRESULT FilterGraph::add(IBaseFilter* filter, LPCWSTR name) {
    const std::u16string given = filters_->add(filter, name);
    HRESULT result = filter->JoinFilterGraph(this, given.c_str());
    if (SUCCEEDED(result) && clock_) result = filter->SetSyncSource(clock_);
    if (FAILED(result)) {
        letGo(filter);
        return result;
    }
    return name != nullptr && given != name ? VFW_S_DUPLICATE_NAME : S_OK;
}

HRESULT FilterGraph::RemoveFilter(IBaseFilter* filter) {
    if (filter == nullptr) return E_POINTER;
    const GraphLock lock(graphLock_);
    if (!filters_->contains(filter)) return VFW_E_NOT_IN_GRAPH;
    if (state_ != State_Stopped) return VFW_E_NOT_STOPPED;
    letGo(filter);
    return S_OK;
}

void FilterGraph::letGo(IBaseFilter* filter) noexcept {
    withoutThrowing([&] {
        disconnectAll(filter);
        return S_OK;
    });
    filter->SetSyncSource(nullptr);
    filter->JoinFilterGraph(nullptr, nullptr);
    filters_->remove(filter);
}

HRESULT FilterGraph::EnumFilters(IEnumFilters** filters) {
    if (filters == nullptr) return E_POINTER;
    *filters = nullptr;
    return withoutThrowing([&] {
        *filters = new FilterEnumeration(filters_);  // NOLINT(cppcoreguidelines-owning-memory)
        return S_OK;
    });
}

HRESULT FilterGraph::FindFilterByName(LPCWSTR name, IBaseFilter** filter) {
    if (name == nullptr || filter == nullptr) return E_POINTER;
    *filter = nullptr;
    return withoutThrowing([&] {
        *filter = filters_->find(name).Detach();
        return *filter != nullptr ? S_OK : VFW_E_NOT_FOUND;
    });
}

HRESULT FilterGraph::Connect(IPin* output, IPin* input) {
    return ConnectDirect(output, input, nullptr);
}

HRESULT FilterGraph::ConnectDirect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) {
    if (output == nullptr || input == nullptr) return E_POINTER;
    return withoutThrowing([&] { return connect(output, input, type); });
}

HRESULT FilterGraph::connect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) {
    const GraphLock lock(graphLock_);
    for (IPin* pin : {output, input}) {
        const CComPtr<IBaseFilter> owner = filterOf(pin);
        if (!owner || !filters_->contains(owner)) return VFW_E_NOT_IN_GRAPH;
    }
    return output->Connect(input, type);
}

HRESULT FilterGraph::Reconnect(IPin* pin) {
    if (pin == nullptr) return E_POINTER;
    const GraphLock lock(graphLock_);
    if (state_ != State_Stopped) return VFW_E_NOT_STOPPED;
    const CComPtr<IPin> peer = peerOf(pin);
    if (!peer) return VFW_E_NOT_CONNECTED;
    PIN_DIRECTION direction = PINDIR_INPUT;
    HRESULT result = pin->QueryDirection(&direction);
    if (FAILED(result)) return result;
    for (IPin* end : {pin, peer.p}) {
        result = end->Disconnect();
        if (FAILED(result)) return result;
    }
    return direction == PINDIR_OUTPUT ? pin->Connect(peer, nullptr) : peer->Connect(pin, nullptr);
}

HRESULT FilterGraph::Disconnect(IPin* pin) {
    if (pin == nullptr) return E_POINTER;
    const GraphLock lock(graphLock_);
    return pin->Disconnect();
}

HRESULT FilterGraph::Render(IPin* /*output*/) {
    return E_NOTIMPL;
}

HRESULT FilterGraph::RenderFile(LPCWSTR /*file*/, LPCWSTR /*playList*/) {
    return E_NOTIMPL;
}

HRESULT FilterGraph::AddSourceFilter(LPCWSTR /*file*/, LPCWSTR /*name*/, IBaseFilter** /*filter*/) {
    return E_NOTIMPL;
}

HRESULT FilterGraph::SetLogFile(DWORD_PTR /*file*/) {
    return E_NOTIMPL;
}

HRESULT FilterGraph::Abort() {
    return S_OK;
}

HRESULT FilterGraph::ShouldOperationContinue() {
    return S_OK;
}

HRESULT FilterGraph::GetEventHandle(OAEVENT* event) {
    if (event == nullptr) return E_POINTER;
    *event = reinterpret_cast<OAEVENT>(events_.available());
    return S_OK;
}

HRESULT FilterGraph::GetEvent(LONG* code, LONG_PTR* parameter1, LONG_PTR* parameter2, LONG milliseconds) {
    if (code == nullptr || parameter1 == nullptr || parameter2 == nullptr) return E_POINTER;
    return withoutThrowing([&] {
        GraphEvent event{};
        const HRESULT result = events_.take(milliseconds, event);
        *code = event.code;
        *parameter1 = event.parameter1;
        *parameter2 = event.parameter2;
        return result;
    });
}

HRESULT FilterGraph::WaitForCompletion(LONG milliseconds, LONG* code) {
    if (code == nullptr) return E_POINTER;
    return withoutThrowing([&] { return events_.waitForEnd(milliseconds, *code); });
}

HRESULT FilterGraph::FreeEventParams(LONG /*code*/, LONG_PTR /*parameter1*/, LONG_PTR /*parameter2*/) {
    return S_OK;
}

HRESULT FilterGraph::Notify(LONG code, LONG_PTR parameter1, LONG_PTR parameter2) {
    return withoutThrowing([&] {
        events_.send({code, parameter1, parameter2});
        return S_OK;
    });
}

HRESULT FilterGraph::GetClassID(CLSID* classId) {
    if (classId == nullptr) return E_POINTER;
    *classId = CLSID_FilterGraph;
    return S_OK;
}

}  // namespace platform
