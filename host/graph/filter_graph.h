#pragma once

#include <cstddef>
#include <filesystem>

#include "framework/base/com_ptr.h"
#include "host/graph/module_filters.h"
#include "platform/component/component_runtime.h"
#include "platform/graph/media_graph.h"

namespace mvrtpfec {

/// Owns a filter graph that runs without a clock, as fast as its packets come, and what makes the module's
/// filters for it. One thread. Everything but stop() throws GraphError.
///
/// Filters are added and connected first; what a filter calls back must outlive the running graph, so whoever
/// hands a callback to a filter calls stop() before it goes.
class FilterGraph {
public:
    /// The module is named as for ModuleFilters.
    explicit FilterGraph(const std::filesystem::path& module = {});
    ~FilterGraph();

    FilterGraph(const FilterGraph&) = delete;
    FilterGraph& operator=(const FilterGraph&) = delete;

    ModuleFilters& filters() { return filters_; }

    void add(IBaseFilter* filter, LPCWSTR name);
    /// Pins are counted by direction, from 0.
    void connect(IBaseFilter* from, std::size_t output, IBaseFilter* to, std::size_t input);

    void run();
    /// When this returns no filter calls back any more. Any state, more than once.
    void stop() noexcept;

private:
    // From the last to go on: nothing of the module's is left when it is unloaded, nor of the system's when
    // its runtime is left.
    platform::ComponentRuntime runtime_;
    ModuleFilters filters_;
    CComPtr<IGraphBuilder> graph_;
    CComPtr<IMediaControl> control_;
};

}  // namespace mvrtpfec
