#include "host/graph/filter_graph.h"

#include "host/graph/graph_error.h"

namespace mvrtpfec {

namespace {

CComPtr<IPin> pinOf(IBaseFilter* filter, PIN_DIRECTION wanted, std::size_t index) {
    CComPtr<IEnumPins> pins;
    requireGraph(filter->EnumPins(&pins), "a filter's pins can't be listed");
    CComPtr<IPin> pin;
    while (pins->Next(1, &pin, nullptr) == S_OK) {
        PIN_DIRECTION direction = PINDIR_INPUT;
        requireGraph(pin->QueryDirection(&direction), "a pin doesn't tell its direction");
        if (direction == wanted && index-- == 0) return pin;
        pin.Release();
    }
    throw GraphError("a filter has too few pins");
}

}  // namespace

FilterGraph::FilterGraph(const std::filesystem::path& module) : filters_(module) {
    requireGraph(platform::createFilterGraph(&graph_), "a filter graph can't be created");
    control_ = queryFor<IMediaControl>(graph_, IID_IMediaControl);
    const auto filter = queryFor<IMediaFilter>(graph_, IID_IMediaFilter);
    if (!control_ || !filter) throw GraphError("the filter graph can't be controlled");
    requireGraph(filter->SetSyncSource(nullptr), "the filter graph can't run without a clock");
}

FilterGraph::~FilterGraph() {
    stop();
}

void FilterGraph::add(IBaseFilter* filter, LPCWSTR name) {
    requireGraph(graph_->AddFilter(filter, name), "a filter can't be added to the graph");
}

void FilterGraph::connect(IBaseFilter* from, std::size_t output, IBaseFilter* to, std::size_t input) {
    const auto source = pinOf(from, PINDIR_OUTPUT, output);
    const auto target = pinOf(to, PINDIR_INPUT, input);
    requireGraph(graph_->ConnectDirect(source, target, nullptr), "two filters can't be connected");
}

void FilterGraph::run() {
    requireGraph(control_->Run(), "the filter graph can't be started");
}

void FilterGraph::stop() noexcept {
    control_->Stop();
}

}  // namespace mvrtpfec
