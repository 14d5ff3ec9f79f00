// How a pin gets connected and disconnected; all of it under the filter lock.

#include "framework/base/base_pin.h"
#include "framework/guarded_entry.h"

namespace mvrtpfec {

namespace {

struct MediaTypeDeleter {
    void operator()(AM_MEDIA_TYPE* type) const noexcept { DeleteMediaType(type); }
};
using OwnedMediaType = std::unique_ptr<AM_MEDIA_TYPE, MediaTypeDeleter>;

OwnedMediaType nextType(IEnumMediaTypes& types) {
    AM_MEDIA_TYPE* type = nullptr;
    ULONG fetched = 0;
    const bool got = types.Next(1, &type, &fetched) == S_OK;
    return OwnedMediaType(got ? type : nullptr);
}

bool saysNoMoreThanRefused(HRESULT result) {
    return result == E_FAIL || result == E_INVALIDARG || result == VFW_E_TYPE_NOT_ACCEPTED ||
           result == VFW_E_NO_ACCEPTABLE_TYPES;
}

/// Of the reasons met on the way, the first that says more than "refused" is told.
void note(HRESULT& failure, HRESULT result) {
    if (failure == VFW_E_NO_ACCEPTABLE_TYPES && !saysNoMoreThanRefused(result)) failure = result;
}

}  // namespace

HRESULT CBasePin::checkReadyToConnect() const {
    if (IsConnected()) return VFW_E_ALREADY_CONNECTED;
    return IsStopped() || m_bCanReconnectWhenActive ? S_OK : VFW_E_NOT_STOPPED;
}

HRESULT CBasePin::CheckConnect(IPin* pin) {
    PIN_DIRECTION other = direction_;
    const HRESULT result = pin->QueryDirection(&other);
    if (FAILED(result)) return result;
    return other == direction_ ? VFW_E_INVALID_DIRECTION : S_OK;
}

HRESULT CBasePin::CheckOfferedType(const CMediaType* type) {
    const HRESULT result = CheckMediaType(type);
    if (result == S_OK) return S_OK;
    return SUCCEEDED(result) || saysNoMoreThanRefused(result) ? VFW_E_TYPE_NOT_ACCEPTED : result;
}

HRESULT CBasePin::Connect(IPin* receiver, const AM_MEDIA_TYPE* type) {
    if (receiver == nullptr) return E_POINTER;
    return guardedEntry([&] {
        const CAutoLock lock(m_pLock);
        const HRESULT ready = checkReadyToConnect();
        if (FAILED(ready)) return ready;
        CMediaType wanted;
        const HRESULT copied = type == nullptr ? S_OK : wanted.Set(*type);
        return FAILED(copied) ? copied : AgreeMediaType(receiver, type == nullptr ? nullptr : &wanted);
    });
}

HRESULT CBasePin::AgreeMediaType(IPin* receiver, const CMediaType* wanted) {
    if (wanted != nullptr && !wanted->IsPartiallySpecified()) return AttemptConnection(receiver, wanted);

    IPin* const lists[] = {m_bTryMyTypesFirst ? this : receiver, m_bTryMyTypesFirst ? receiver : this};
    HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
    for (IPin* list : lists) {
        CComPtr<IEnumMediaTypes> types;
        if (FAILED(list->EnumMediaTypes(&types)) || types == nullptr) continue;
        const HRESULT result = TryMediaTypes(receiver, wanted, types);
        if (SUCCEEDED(result)) return S_OK;
        note(failure, result);
    }
    return failure;
}

HRESULT CBasePin::TryMediaTypes(IPin* receiver, const CMediaType* wanted, IEnumMediaTypes* types) {
    HRESULT result = types->Reset();
    if (FAILED(result)) return result;
    HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
    while (const OwnedMediaType next = nextType(*types)) {
        CMediaType offered;
        result = offered.Set(*next);
        if (FAILED(result)) return result;
        if (wanted != nullptr && !offered.MatchesPartial(*wanted)) continue;
        result = AttemptConnection(receiver, &offered);
        if (SUCCEEDED(result)) return S_OK;
        note(failure, result);
    }
    return failure;
}

HRESULT CBasePin::AttemptConnection(IPin* receiver, const CMediaType* type) {
    const HRESULT result = guardedEntry([&] { return connectTo(receiver, *type); });
    if (FAILED(result)) undoConnection();
    return FAILED(result) ? result : S_OK;
}

HRESULT CBasePin::connectTo(IPin* receiver, const CMediaType& type) {
    HRESULT result = CheckConnect(receiver);
    if (FAILED(result)) return result;
    result = CheckOfferedType(&type);
    if (FAILED(result)) return result;
    ExchangeConnected(receiver);
    result = SetMediaType(&type);
    if (FAILED(result)) return result;
    result = receiver->ReceiveConnection(this, &type);
    if (FAILED(result)) return result;
    result = guardedEntry([&] { return CompleteConnect(receiver); });
    if (FAILED(result)) receiver->Disconnect();
    return result;
}

HRESULT CBasePin::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) {
    if (connector == nullptr || type == nullptr) return E_POINTER;
    return guardedEntry([&] {
        const CAutoLock lock(m_pLock);
        HRESULT result = checkReadyToConnect();
        if (FAILED(result)) return result;
        CMediaType offered;
        result = offered.Set(*type);
        if (FAILED(result)) return result;
        result = guardedEntry([&] { return acceptFrom(connector, offered); });
        if (FAILED(result)) undoConnection();
        return FAILED(result) ? result : S_OK;
    });
}

HRESULT CBasePin::acceptFrom(IPin* connector, const CMediaType& type) {
    HRESULT result = CheckConnect(connector);
    if (FAILED(result)) return result;
    result = CheckOfferedType(&type);
    if (FAILED(result)) return result;
    ExchangeConnected(connector);
    result = SetMediaType(&type);
    if (FAILED(result)) return result;
    return CompleteConnect(connector);
}

void CBasePin::undoConnection() noexcept {
    guardedEntry([&] { return BreakConnect(); });
    ExchangeConnected(nullptr);
}

HRESULT CBasePin::Disconnect() {
    // Released after the lock: it may be the last reference to the other filter.
    const auto other = GetConnected();
    return guardedEntry([&] {
        const CAutoLock lock(m_pLock);
        return IsStopped() ? DisconnectInternal() : VFW_E_NOT_STOPPED;
    });
}

HRESULT CBasePin::DisconnectInternal() {
    if (!IsConnected()) return S_FALSE;
    const HRESULT result = BreakConnect();
    if (FAILED(result)) return result;
    ExchangeConnected(nullptr);
    return S_OK;
}

}  // namespace mvrtpfec
