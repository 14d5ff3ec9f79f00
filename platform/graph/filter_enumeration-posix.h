#pragma once

#include <memory>

#include "platform/component/counted.h"
#include "platform/graph/filter_list-posix.h"

namespace platform {

/// Walks over a graph's filters. Once the list has changed it only answers VFW_E_ENUM_OUT_OF_SYNC until
/// Reset. One thread at a time.
class FilterEnumeration final : public Counted<IEnumFilters> {
public:
    /// At the list's start.
    explicit FilterEnumeration(std::shared_ptr<const FilterList> list);

    STDMETHODIMP QueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP Next(ULONG count, IBaseFilter** filters, ULONG* fetched) override;
    STDMETHODIMP Skip(ULONG count) override;
    STDMETHODIMP Reset() override;
    STDMETHODIMP Clone(IEnumFilters** copy) override;

private:
    FilterEnumeration(const FilterEnumeration& other);
    ~FilterEnumeration() override = default;

    bool isOutOfSync() const { return list_->version() != snapshot_.version; }
    ULONG left() const { return static_cast<ULONG>(snapshot_.filters.size() - position_); }

    std::shared_ptr<const FilterList> list_;
    FilterList::Snapshot snapshot_;
    std::size_t position_ = 0;
};

}  // namespace platform
