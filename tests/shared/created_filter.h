#pragma once

#include "framework/base/base_filter.h"
#include "framework/base/com_ptr.h"

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
