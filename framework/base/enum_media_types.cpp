#include "framework/base/enum_media_types.h"

#include <climits>

#include "framework/base/base_pin.h"
#include "framework/base/hand_out.h"
#include "framework/guarded_entry.h"

namespace mvrtpfec {

CEnumMediaTypes::CEnumMediaTypes(CBasePin* pin, const CEnumMediaTypes* source)
    : CUnknown("CEnumMediaTypes", nullptr),
      reference_(pin),
      pin_(*pin),
      position_(source == nullptr ? 0 : source->position_),
      version_(source == nullptr ? pin->GetMediaTypeVersion() : source->version_) {}

HRESULT CEnumMediaTypes::NonDelegatingQueryInterface(REFIID riid, void** object) {
    if (riid == IID_IEnumMediaTypes) return GetInterface(static_cast<IEnumMediaTypes*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(riid, object);
}

bool CEnumMediaTypes::isOutOfSync() const {
    return pin_.GetMediaTypeVersion() != version_;
}

/// S_FALSE at the end of the list.
HRESULT CEnumMediaTypes::fetch(ULONG count, AM_MEDIA_TYPE** types, ULONG& got) {
    for (; got < count; ++got) {
        CMediaType type;
        if (pin_.GetMediaType(position_ + static_cast<int>(got), &type) != S_OK) return S_FALSE;
        types[got] = CreateMediaType(&type);
        if (types[got] == nullptr) return E_OUTOFMEMORY;
    }
    return S_OK;
}

HRESULT CEnumMediaTypes::Next(ULONG count, AM_MEDIA_TYPE** types, ULONG* fetched) {
    if (types == nullptr) return E_POINTER;
    if (fetched == nullptr && count != 1) return E_INVALIDARG;
    if (fetched != nullptr) *fetched = 0;
    ULONG got = 0;
    const HRESULT result =
        guardedEntry([&] { return isOutOfSync() ? VFW_E_ENUM_OUT_OF_SYNC : fetch(count, types, got); });
    if (FAILED(result)) {
        while (got > 0) DeleteMediaType(types[--got]);
        return result;
    }
    position_ += static_cast<int>(got);
    if (fetched != nullptr) *fetched = got;
    return result;
}

HRESULT CEnumMediaTypes::Skip(ULONG count) {
    return guardedEntry([&] {
        if (isOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
        if (count == 0) return S_OK;
        if (count > static_cast<ULONG>(INT_MAX - position_)) return S_FALSE;
        const int next = position_ + static_cast<int>(count);
        CMediaType last;
        if (pin_.GetMediaType(next - 1, &last) != S_OK) return S_FALSE;
        position_ = next;
        return S_OK;
    });
}

HRESULT CEnumMediaTypes::Reset() {
    return guardedEntry([&] {
        version_ = pin_.GetMediaTypeVersion();
        position_ = 0;
        return S_OK;
    });
}

HRESULT CEnumMediaTypes::Clone(IEnumMediaTypes** copy) {
    return guardedEntry([&] {
        if (copy == nullptr) return E_POINTER;
        *copy = nullptr;
        if (isOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
        return HandOutNew<CEnumMediaTypes>(copy, &pin_, this);
    });
}

}  // namespace mvrtpfec
