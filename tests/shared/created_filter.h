#pragma once

#include <vector>

#include "framework/base/base_filter.h"
#include "framework/base/com_ptr.h"
#include "mvrtpfec/rtp_fec_filter.h"

namespace mvrtpfec {

using CreationFunction = CUnknown* (*)(IUnknown*, HRESULT*);

/// The filter of a new object that nobody holds yet.
inline CComPtr<IBaseFilter> filterOf(CUnknown* created) {
    void* found = nullptr;
    created->NonDelegatingQueryInterface(IID_IBaseFilter, &found);
    CComPtr<IBaseFilter> filter;
    filter.Attach(static_cast<IBaseFilter*>(found));
    return filter;
}
inline CComPtr<IBaseFilter> makeFilter(CreationFunction create) {
    return filterOf(create(nullptr, nullptr));
}

/// Nothing for a filter that has no matrix.
inline void setMatrix(IBaseFilter* filter, std::int32_t mode, std::int32_t columns, std::int32_t rows) {
    const auto config = queryFor<IFECoverRTPConfig>(filter, IID_IFECoverRTPConfig);
    if (!config) return;
    config->SetMode(mode);
    config->SetColumns(columns);
    config->SetRows(rows);
}

inline std::vector<CComPtr<IPin>> pinsOf(IBaseFilter* filter, PIN_DIRECTION direction) {
    std::vector<CComPtr<IPin>> pins;
    CComPtr<IEnumPins> all;
    filter->EnumPins(&all);
    for (CComPtr<IPin> pin; all->Next(1, &pin, nullptr) == S_OK; pin.Release()) {
        PIN_DIRECTION own{};
        pin->QueryDirection(&own);
        if (own == direction) pins.push_back(pin);
    }
    return pins;
}

}  // namespace mvrtpfec
