#include "platform/graph/media_graph.h"

namespace platform {

namespace {

template <class Interface>
HRESULT create(REFCLSID classId, REFIID riid, Interface** object) noexcept {
    if (object == nullptr) return E_POINTER;
    void* created = nullptr;
    const HRESULT result = CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, riid, &created);
    *object = static_cast<Interface*>(created);
    return result;
}

}  // namespace

HRESULT createFilterGraph(IGraphBuilder** graph) noexcept {
    return create(CLSID_FilterGraph, IID_IGraphBuilder, graph);
}

HRESULT createSystemClock(IReferenceClock** clock) noexcept {
    return create(CLSID_SystemClock, IID_IReferenceClock, clock);
}

}  // namespace platform
