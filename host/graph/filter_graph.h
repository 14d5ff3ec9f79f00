#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

#include "framework/base/com_ptr.h"
#include "platform/media_graph.h"

namespace mvrtpfec {

/// The filter graph could not be built or run.
class GraphError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws GraphError for a failed result: "ACTION: COM Error CODE: TEXT".
void requireGraph(HRESULT result, const std::string& action);

/// Owns a filter graph that runs without a clock, as fast as its packets come. One thread.
///
/// Filters are added and connected first; what a filter calls back must outlive the running graph, so whoever
/// hands a callback to a filter calls stop() before it goes.
class FilterGraph {
public:
    FilterGraph();
    ~FilterGraph();

    FilterGraph(const FilterGraph&) = delete;
    FilterGraph& operator=(const FilterGraph&) = delete;

    void add(IBaseFilter* filter, LPCWSTR name);
    /// Pins are counted by direction, from 0.
    void connect(IBaseFilter* from, std::size_t output, IBaseFilter* to, std::size_t input);

    void run();
    /// When this returns no filter calls back any more. Any state, more than once.
    void stop() noexcept;

private:
    CComPtr<IGraphBuilder> graph_;
    CComPtr<IMediaControl> control_;
};

}  // namespace mvrtpfec
