#pragma once
// Filters seen as the nodes of a graph, their connected pins as its edges. All of it calls filters and pins,
// and throws std::bad_alloc.

#include <vector>

#include "platform/graph/filter_list-posix.h"

namespace platform {

std::vector<CComPtr<IPin>> pinsOf(IBaseFilter* filter);
/// Empty when it isn't connected.
CComPtr<IPin> peerOf(IPin* pin);
CComPtr<IBaseFilter> filterOf(IPin* pin);

/// The filters so that each comes after those it sends to; a cycle is cut somewhere. This is the order of
/// state changes: nobody sends to a filter that isn't ready yet, or waits in one that goes on.
Filters downstreamFirst(const Filters& filters);

/// How many filters a stream ends in: a connected input, no connected output.
std::size_t countRenderers(const Filters& filters);

/// Breaks every connection of a filter, at both ends.
void disconnectAll(IBaseFilter* filter);

}  // namespace platform
