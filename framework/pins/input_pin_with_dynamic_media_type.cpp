#include "framework/pins/input_pin_with_dynamic_media_type.h"

#include <memory>

#include "framework/guarded_entry.h"
#include "framework/pins/announced_sample.h"

namespace mvrtpfec {

namespace {

/// The result for a type that was not taken with S_OK.
HRESULT refusal(HRESULT result) {
    const bool saysNoMore = SUCCEEDED(result) || result == E_INVALIDARG || result == E_FAIL;
    return saysNoMore ? VFW_E_TYPE_NOT_ACCEPTED : result;
}

}  // namespace

HRESULT CInputPinWithDynamicMediaType::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) {
    if (connector == nullptr || type == nullptr) return E_POINTER;
    // Released after the lock: it may be the last reference to the other filter.
    const auto previous = GetConnected();
    return guardedEntry([&] {
        const CAutoLock lock(m_pLock);
        HRESULT result = guardedEntry([&] { return checkConnection(connector, *type); });
        if (FAILED(result)) {
            BreakConnect();
            return result;
        }
        result = guardedEntry([&] { return acceptConnection(connector, *type); });
        if (SUCCEEDED(result)) return S_OK;
        ExchangeConnected(nullptr);
        BreakConnect();
        return result;
    });
}

HRESULT CInputPinWithDynamicMediaType::checkConnection(IPin* connector, const AM_MEDIA_TYPE& type) {
    const HRESULT result = CheckConnect(connector);
    if (FAILED(result)) return result;
    const CMediaType offered(type);
    const HRESULT answer = CheckMediaType(&offered);
    return answer == S_OK ? S_OK : refusal(answer);
}

HRESULT CInputPinWithDynamicMediaType::acceptConnection(IPin* connector, const AM_MEDIA_TYPE& type) {
    const CMediaType agreed(type);
    const bool again = IsConnectedTo(connector);
    ExchangeConnected(connector);
    const HRESULT result = SetMediaType(&agreed);
    m_bTypeChangePending = true;
    if (FAILED(result)) return result;
    return again ? CompleteReconnect(connector) : CompleteConnect(connector);
}

HRESULT CInputPinWithDynamicMediaType::CompleteReconnect(IPin*) {
    return S_OK;
}

HRESULT CInputPinWithDynamicMediaType::Receive(IMediaSample* sample) {
    if (sample == nullptr) return E_POINTER;
    return guardedEntry([&] {
        AM_MEDIA_TYPE* attached = nullptr;
        const HRESULT result = sample->GetMediaType(&attached);
        if (FAILED(result)) return result;
        if (attached != nullptr) return receiveWithType(sample, attached);
        return m_bTypeChangePending ? receiveAnnouncing(sample) : ReceiveSample(sample);
    });
}

HRESULT CInputPinWithDynamicMediaType::receiveWithType(IMediaSample* sample, AM_MEDIA_TYPE* attached) {
    const std::unique_ptr<AM_MEDIA_TYPE, decltype(&DeleteMediaType)> owner(attached, &DeleteMediaType);
    const CMediaType type(*attached);
    const HRESULT result = SetMediaType(&type);
    if (FAILED(result)) return result;
    m_bTypeChangePending = false;
    return ReceiveSample(sample);
}

HRESULT CInputPinWithDynamicMediaType::receiveAnnouncing(IMediaSample* sample) {
    // Claimed before the type is read: a reconnection meanwhile is for the next sample to announce.
    if (!m_bTypeChangePending.exchange(false)) return ReceiveSample(sample);
    AnnouncedSample announced;
    const HRESULT result = announceConnection(*this, sample, announced);
    if (SUCCEEDED(result)) return ReceiveSample(announced.sample);
    m_bTypeChangePending = true;
    return result;
}

HRESULT CInputPinWithDynamicMediaType::NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) {
    return guardedEntry([&] {
        HRESULT result = CBaseInputPin::NotifyAllocator(allocator, readOnly);
        if (FAILED(result)) return result;
        ALLOCATOR_PROPERTIES required{};
        result = GetAllocatorRequirements(&required);
        if (result == E_NOTIMPL) return S_OK;
        if (FAILED(result)) return result;
        ALLOCATOR_PROPERTIES actual{};
        result = allocator->GetProperties(&actual);
        if (FAILED(result)) return result;
        return actual.cBuffers < required.cBuffers || actual.cbBuffer < required.cbBuffer ? E_FAIL : S_OK;
    });
}

}  // namespace mvrtpfec
