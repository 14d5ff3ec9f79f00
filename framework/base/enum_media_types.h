#pragma once

#include "framework/base/unknown.h"
#include "platform/graph/media_filters.h"

namespace mvrtpfec {

class CBasePin;

/// The media types that a pin prefers, in its order. It keeps the pin's filter alive. When the pin's list
/// changes, everything but Reset fails with VFW_E_ENUM_OUT_OF_SYNC until a Reset. For one thread at a time.
class CEnumMediaTypes final : public CUnknown, public IEnumMediaTypes {
public:
    /// From the first type on, or from where `source`, if given, stands.
    explicit CEnumMediaTypes(CBasePin* pin, const CEnumMediaTypes* source = nullptr);

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;

    /// Each type is the caller's to free by DeleteMediaType. S_FALSE when fewer are left than asked for.
    /// `fetched` may be null for a count of 1 only (E_INVALIDARG). On failure nothing is handed out.
    STDMETHODIMP Next(ULONG count, AM_MEDIA_TYPE** types, ULONG* fetched) override;
    /// S_FALSE, and nothing skipped, when fewer are left.
    STDMETHODIMP Skip(ULONG count) override;
    STDMETHODIMP Reset() override;
    STDMETHODIMP Clone(IEnumMediaTypes** copy) override;

private:
    bool isOutOfSync() const;
    HRESULT fetch(ULONG count, AM_MEDIA_TYPE** types, ULONG& got);

    CComPtr<IPin> reference_;
    CBasePin& pin_;
    int position_ = 0;
    LONG version_;
};

}  // namespace mvrtpfec
