#include "platform/graph/graph_topology-posix.h"

#include <algorithm>

namespace platform {

namespace {

bool isOutput(IPin* pin) {
    PIN_DIRECTION direction = PINDIR_INPUT;
    return SUCCEEDED(pin->QueryDirection(&direction)) && direction == PINDIR_OUTPUT;
}

/// Walks depth first along the streams; a filter takes its place when all behind it have theirs.
class DownstreamOrder {
public:
    explicit DownstreamOrder(const Filters& filters) : filters_(filters), seen_(filters.size()) {
        order_.reserve(filters.size());
    }

    Filters make() && {
        for (std::size_t i = 0; i < filters_.size(); ++i) visit(i);
        return std::move(order_);
    }

private:
    void visit(std::size_t index) {
        if (seen_[index]) return;
        seen_[index] = true;
        for (const CComPtr<IPin>& pin : pinsOf(filters_[index])) {
            if (!isOutput(pin)) continue;
            if (const CComPtr<IPin> peer = peerOf(pin)) visitOwner(peer);
        }
        order_.push_back(filters_[index]);
    }

    void visitOwner(IPin* pin) {
        const CComPtr<IBaseFilter> owner = filterOf(pin);
        const auto isOwner = [&](const auto& filter) { return isSameObject(filter, owner); };
        const auto found = std::ranges::find_if(filters_, isOwner);
        if (found != filters_.end()) visit(static_cast<std::size_t>(found - filters_.begin()));
    }

    const Filters& filters_;
    std::vector<bool> seen_;
    Filters order_;
};

bool isRenderer(IBaseFilter* filter) {
    bool receives = false;
    for (const CComPtr<IPin>& pin : pinsOf(filter)) {
        if (!peerOf(pin)) continue;
        if (isOutput(pin)) return false;
        receives = true;
    }
    return receives;
}

}  // namespace

std::vector<CComPtr<IPin>> pinsOf(IBaseFilter* filter) {
    std::vector<CComPtr<IPin>> pins;
    CComPtr<IEnumPins> enumeration;
    if (FAILED(filter->EnumPins(&enumeration))) return pins;
    for (int attempt = 0; attempt < 3; ++attempt) {
        HRESULT result = S_OK;
        for (CComPtr<IPin> pin; (result = enumeration->Next(1, &pin, nullptr)) == S_OK; pin.Release())
            pins.push_back(pin);
        if (result != VFW_E_ENUM_OUT_OF_SYNC) break;
        pins.clear();
        enumeration->Reset();
    }
    return pins;
}

CComPtr<IPin> peerOf(IPin* pin) {
    CComPtr<IPin> peer;
    if (FAILED(pin->ConnectedTo(&peer))) return {};
    return peer;
}

CComPtr<IBaseFilter> filterOf(IPin* pin) {
    PIN_INFO info{};
    CComPtr<IBaseFilter> filter;
    if (SUCCEEDED(pin->QueryPinInfo(&info))) filter.Attach(info.pFilter);
    return filter;
}

Filters downstreamFirst(const Filters& filters) {
    return DownstreamOrder(filters).make();
}

std::size_t countRenderers(const Filters& filters) {
    return static_cast<std::size_t>(std::ranges::count_if(filters, isRenderer));
}

void disconnectAll(IBaseFilter* filter) {
    for (const CComPtr<IPin>& pin : pinsOf(filter)) {
        const CComPtr<IPin> peer = peerOf(pin);
        if (!peer) continue;
        peer->Disconnect();
        pin->Disconnect();
    }
}

}  // namespace platform
