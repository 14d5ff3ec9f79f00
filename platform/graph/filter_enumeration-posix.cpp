#include "platform/graph/filter_enumeration-posix.h"

#include <algorithm>

#include "platform/no_throw.h"

namespace platform {

FilterEnumeration::FilterEnumeration(std::shared_ptr<const FilterList> list)
    : list_(std::move(list)), snapshot_(list_->snapshot()) {}

FilterEnumeration::FilterEnumeration(const FilterEnumeration& other)
    : Counted(), list_(other.list_), snapshot_(other.snapshot_), position_(other.position_) {}

HRESULT FilterEnumeration::QueryInterface(REFIID riid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (riid != IID_IUnknown && riid != IID_IEnumFilters) return E_NOINTERFACE;
    *object = static_cast<IEnumFilters*>(this);
    AddRef();
    return S_OK;
}

HRESULT FilterEnumeration::Next(ULONG count, IBaseFilter** filters, ULONG* fetched) {
    if (filters == nullptr) return E_POINTER;
    if (fetched == nullptr && count > 1) return E_INVALIDARG;
    if (fetched != nullptr) *fetched = 0;
    if (isOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
    const ULONG taken = std::min(count, left());
    for (ULONG i = 0; i < taken; ++i) snapshot_.filters[position_++].CopyTo(&filters[i]);
    if (fetched != nullptr) *fetched = taken;
    return taken == count ? S_OK : S_FALSE;
}

HRESULT FilterEnumeration::Skip(ULONG count) {
    if (isOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
    const ULONG skipped = std::min(count, left());
    position_ += skipped;
    return skipped == count ? S_OK : S_FALSE;
}

HRESULT FilterEnumeration::Reset() {
    return withoutThrowing([&] {
        snapshot_ = list_->snapshot();
        position_ = 0;
        return S_OK;
    });
}

HRESULT FilterEnumeration::Clone(IEnumFilters** copy) {
    if (copy == nullptr) return E_POINTER;
    *copy = nullptr;
    return withoutThrowing([&] {
        *copy = new FilterEnumeration(*this);  // NOLINT(cppcoreguidelines-owning-memory)
        return S_OK;
    });
}

}  // namespace platform
