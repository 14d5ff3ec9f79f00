#pragma once

#include "framework/base/unknown.h"
#include "platform/graph/media_filters.h"

namespace mvrtpfec {

class CBaseFilter;

/// The pins of a filter in their order, as they are when asked for. It keeps the filter alive. When the
/// filter's set of pins changes, everything but Reset fails with VFW_E_ENUM_OUT_OF_SYNC until a Reset. For
/// one thread at a time.
class CEnumPins final : public CUnknown, public IEnumPins {
public:
    /// From the first pin on, or from where `source`, if given, stands.
    explicit CEnumPins(CBaseFilter* filter, const CEnumPins* source = nullptr);

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;

    /// S_FALSE when fewer are left than asked for. `fetched` may be null for a count of 1 only
    /// (E_INVALIDARG).
    STDMETHODIMP Next(ULONG count, IPin** pins, ULONG* fetched) override;
    /// S_FALSE, and nothing skipped, when fewer are left.
    STDMETHODIMP Skip(ULONG count) override;
    STDMETHODIMP Reset() override;
    STDMETHODIMP Clone(IEnumPins** copy) override;

private:
    bool isOutOfSync() const;
    ULONG left() const;

    CComPtr<IBaseFilter> reference_;
    CBaseFilter& filter_;
    int position_ = 0;
    LONG version_;
};

}  // namespace mvrtpfec
