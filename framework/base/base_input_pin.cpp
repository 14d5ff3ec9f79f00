#include "framework/base/base_input_pin.h"

#include "framework/base/base_filter.h"
#include "framework/base/mem_allocator.h"
#include "framework/guarded_entry.h"

namespace mvrtpfec {

namespace {

bool isOutput(IPin& pin) {
    PIN_DIRECTION direction = PINDIR_INPUT;
    return SUCCEEDED(pin.QueryDirection(&direction)) && direction == PINDIR_OUTPUT;
}

bool mayBlock(IPin* receiver) {
    const auto input = queryFor<IMemInputPin>(receiver, IID_IMemInputPin);
    return input == nullptr || input->ReceiveCanBlock() != S_FALSE;
}

}  // namespace

CBaseInputPin::CBaseInputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* result,
                             LPCWSTR name)
    : CBasePin(objectName, filter, lock, result, name, PINDIR_INPUT) {}

HRESULT CBaseInputPin::NonDelegatingQueryInterface(REFIID riid, void** object) {
    if (riid == IID_IMemInputPin) return GetInterface(static_cast<IMemInputPin*>(this), object);
    return CBasePin::NonDelegatingQueryInterface(riid, object);
}

HRESULT CBaseInputPin::GetAllocator(IMemAllocator** result) {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    return guardedEntry([&] {
        const CAutoLock lock(m_pLock);
        CComPtr<IMemAllocator> agreed = allocator();
        if (agreed == nullptr) {
            const HRESULT made = CreateMemoryAllocator(&agreed);
            if (FAILED(made)) return made;
            exchanged(allocator_, agreed);
        }
        *result = agreed.Detach();
        return S_OK;
    });
}

HRESULT CBaseInputPin::NotifyAllocator(IMemAllocator* agreed, BOOL readOnly) {
    if (agreed == nullptr) return E_POINTER;
    const CAutoLock lock(m_pLock);
    exchanged(allocator_, CComPtr<IMemAllocator>(agreed));
    m_bReadOnly = readOnly != FALSE;
    return S_OK;
}

HRESULT CBaseInputPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) {
    return E_NOTIMPL;
}

HRESULT CBaseInputPin::CheckStreaming() {
    if (IsStopped()) return VFW_E_WRONG_STATE;
    if (m_bFlushing) return S_FALSE;
    if (m_bRunTimeError) return VFW_E_RUNTIME_ERROR;
    return IsConnected() ? S_OK : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseInputPin::Receive(IMediaSample* sample) {
    if (sample == nullptr) return E_POINTER;
    return guardedEntry([&] {
        const HRESULT result = CheckStreaming();
        return result == S_OK ? checkAttachedType(sample) : result;
    });
}

HRESULT CBaseInputPin::checkAttachedType(IMediaSample* sample) {
    AM_MEDIA_TYPE* attached = nullptr;
    const HRESULT result = sample->GetMediaType(&attached);
    if (FAILED(result) || attached == nullptr) return FAILED(result) ? result : S_OK;
    CMediaType type;
    std::swap(static_cast<AM_MEDIA_TYPE&>(type), *attached);
    DeleteMediaType(attached);
    return checkNewType(type);
}

HRESULT CBaseInputPin::checkNewType(const AM_MEDIA_TYPE& attached) {
    CMediaType type;
    const HRESULT copied = type.Set(attached);
    if (FAILED(copied)) return copied;
    if (CheckMediaType(&type) == S_OK) return S_OK;
    m_bRunTimeError = true;
    EndOfStream();
    m_pFilter->NotifyEvent(EC_ERRORABORT, VFW_E_TYPE_NOT_ACCEPTED, 0);
    return VFW_E_INVALIDMEDIATYPE;
}

HRESULT CBaseInputPin::ReceiveMultiple(IMediaSample** samples, LONG count, LONG* processed) {
    if (samples == nullptr || processed == nullptr) return E_POINTER;
    *processed = 0;
    return guardedEntry([&] {
        HRESULT result = S_OK;
        for (LONG i = 0; i < count && result == S_OK; ++i) {
            result = Receive(samples[i]);
            if (result == S_OK) ++*processed;
        }
        return result;
    });
}

HRESULT CBaseInputPin::ReceiveCanBlock() {
    return guardedEntry([&] {
        bool anyReceiver = false;
        const int count = m_pFilter->GetPinCount();
        for (int i = 0; i < count; ++i) {
            CBasePin* pin = m_pFilter->GetPin(i);
            if (pin == nullptr || !isOutput(*pin)) continue;
            const auto receiver = pin->GetConnected();
            if (receiver == nullptr) continue;
            if (mayBlock(receiver)) return S_OK;
            anyReceiver = true;
        }
        return anyReceiver ? S_FALSE : S_OK;
    });
}

HRESULT CBaseInputPin::BeginFlush() {
    const CAutoLock lock(m_pLock);
    m_bFlushing = true;
    return S_OK;
}

HRESULT CBaseInputPin::EndFlush() {
    const CAutoLock lock(m_pLock);
    m_bFlushing = false;
    m_bRunTimeError = false;
    return S_OK;
}

HRESULT CBaseInputPin::Notify(IBaseFilter*, Quality) {
    return S_OK;
}

HRESULT CBaseInputPin::Inactive() {
    m_bRunTimeError = false;
    m_bFlushing = false;
    const auto agreed = allocator();
    return agreed == nullptr ? VFW_E_NO_ALLOCATOR : agreed->Decommit();
}

HRESULT CBaseInputPin::BreakConnect() {
    const auto agreed = exchanged(allocator_, CComPtr<IMemAllocator>());
    if (agreed != nullptr) agreed->Decommit();
    return S_OK;
}

}  // namespace mvrtpfec
