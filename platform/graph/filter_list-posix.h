#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "platform/component/com_ptr.h"
#include "platform/graph/media_graph.h"

namespace platform {

using Filters = std::vector<CComPtr<IBaseFilter>>;

/// The filters of a graph and their names, newest first. Safe to use from any thread; its lock is a leaf,
/// never held while a filter is called.
class FilterList {
public:
    struct Snapshot {
        Filters filters;
        std::uint64_t version;
    };

    /// Puts the filter in under `wanted`, or under a name made from it when that one is in use, missing or
    /// too long. Returns the name. The filter must not be in the list yet.
    std::u16string add(IBaseFilter* filter, LPCWSTR wanted);
    bool remove(IBaseFilter* filter);

    bool contains(IBaseFilter* filter) const;
    /// Empty when there is none of that name.
    CComPtr<IBaseFilter> find(LPCWSTR name) const;

    /// Empty when there are none.
    CComPtr<IBaseFilter> newest() const;

    Snapshot snapshot() const;
    /// Counts the changes of the list.
    std::uint64_t version() const;

private:
    struct Entry {
        CComPtr<IBaseFilter> filter;
        IUnknown* identity;
        std::u16string name;
    };

    bool isNamed(const std::u16string& name) const;
    std::u16string freeName(std::u16string wanted) const;

    mutable std::mutex mutex_;
    std::vector<Entry> entries_;
    std::uint64_t version_ = 0;
};

}  // namespace platform
