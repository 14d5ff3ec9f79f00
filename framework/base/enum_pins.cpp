#include "framework/base/enum_pins.h"

#include <algorithm>

#include "framework/base/base_filter.h"
#include "framework/base/base_pin.h"
#include "framework/base/hand_out.h"
#include "framework/guarded_entry.h"

namespace mvrtpfec {

CEnumPins::CEnumPins(CBaseFilter* filter, const CEnumPins* source)
    : CUnknown("CEnumPins", nullptr),
      reference_(filter),
      filter_(*filter),
      position_(source == nullptr ? 0 : source->position_),
      version_(source == nullptr ? filter->GetPinVersion() : source->version_) {}

HRESULT CEnumPins::NonDelegatingQueryInterface(REFIID riid, void** object) {
    if (riid == IID_IEnumPins) return GetInterface(static_cast<IEnumPins*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(riid, object);
}

bool CEnumPins::isOutOfSync() const {
    return filter_.GetPinVersion() != version_;
}

ULONG CEnumPins::left() const {
    return static_cast<ULONG>(std::max(0, filter_.GetPinCount() - position_));
}

HRESULT CEnumPins::Next(ULONG count, IPin** pins, ULONG* fetched) {
    if (pins == nullptr) return E_POINTER;
    if (fetched == nullptr && count != 1) return E_INVALIDARG;
    return guardedEntry([&] {
        ULONG got = 0;
        if (fetched != nullptr) *fetched = 0;
        if (isOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
        for (const ULONG wanted = std::min(count, left()); got < wanted; ++got, ++position_) {
            CBasePin* pin = filter_.GetPin(position_);
            if (pin == nullptr) break;
            pin->AddRef();
            pins[got] = pin;
        }
        if (fetched != nullptr) *fetched = got;
        return got == count ? S_OK : S_FALSE;
    });
}

HRESULT CEnumPins::Skip(ULONG count) {
    return guardedEntry([&] {
        if (isOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
        if (count > left()) return S_FALSE;
        position_ += static_cast<int>(count);
        return S_OK;
    });
}

HRESULT CEnumPins::Reset() {
    return guardedEntry([&] {
        version_ = filter_.GetPinVersion();
        position_ = 0;
        return S_OK;
    });
}

HRESULT CEnumPins::Clone(IEnumPins** copy) {
    return guardedEntry([&] {
        if (copy == nullptr) return E_POINTER;
        *copy = nullptr;
        if (isOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
        return HandOutNew<CEnumPins>(copy, &filter_, this);
    });
}

}  // namespace mvrtpfec
