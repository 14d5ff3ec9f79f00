#include "framework/base/base_output_pin.h"

#include <algorithm>

#include "framework/base/mem_allocator.h"

namespace mvrtpfec {

namespace {

template <class Interface>
std::shared_ptr<Interface> share(CComPtr<Interface> object) {
    return {object.Detach(), [](Interface* held) {
                if (held != nullptr) held->Release();
            }};
}

}  // namespace

CBaseOutputPin::CBaseOutputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* result,
                               LPCWSTR name)
    : CBasePin(objectName, filter, lock, result, name, PINDIR_OUTPUT) {}

HRESULT CBaseOutputPin::CheckConnect(IPin* pin) {
    const HRESULT result = CBasePin::CheckConnect(pin);
    if (FAILED(result)) return result;
    auto input = queryFor<IMemInputPin>(pin, IID_IMemInputPin);
    if (input == nullptr) return E_NOINTERFACE;
    exchanged(inputPin_, share(std::move(input)));
    return S_OK;
}

HRESULT CBaseOutputPin::CompleteConnect(IPin*) {
    const auto input = inputPin();
    if (input == nullptr) return VFW_E_NOT_CONNECTED;
    CComPtr<IMemAllocator> decided;
    const HRESULT result = DecideAllocator(input, &decided);
    exchanged(allocator_, share(std::move(decided)));
    return result;
}

HRESULT CBaseOutputPin::BreakConnect() {
    const auto agreed = exchanged(allocator_, std::shared_ptr<IMemAllocator>());
    if (agreed != nullptr) agreed->Decommit();
    exchanged(inputPin_, std::shared_ptr<IMemInputPin>());
    return S_OK;
}

HRESULT CBaseOutputPin::Active() {
    const auto agreed = allocator();
    return agreed == nullptr ? VFW_E_NO_ALLOCATOR : agreed->Commit();
}

HRESULT CBaseOutputPin::Inactive() {
    m_bRunTimeError = false;
    const auto agreed = allocator();
    return agreed == nullptr ? VFW_E_NO_ALLOCATOR : agreed->Decommit();
}

HRESULT CBaseOutputPin::InitAllocator(IMemAllocator** result) {
    return CreateMemoryAllocator(result);
}

HRESULT CBaseOutputPin::DecideAllocator(IMemInputPin* input, IMemAllocator** result) {
    *result = nullptr;
    ALLOCATOR_PROPERTIES required{};
    input->GetAllocatorRequirements(&required);
    required.cbAlign = std::max(LONG{1}, required.cbAlign);

    CComPtr<IMemAllocator> candidate;
    HRESULT outcome = input->GetAllocator(&candidate);
    if (SUCCEEDED(outcome))
        outcome = candidate != nullptr ? offerAllocator(input, candidate, required) : VFW_E_NO_ALLOCATOR;
    if (FAILED(outcome)) {
        candidate.Release();
        outcome = InitAllocator(&candidate);
        if (SUCCEEDED(outcome)) outcome = offerAllocator(input, candidate, required);
    }
    if (SUCCEEDED(outcome)) *result = candidate.Detach();
    return outcome;
}

HRESULT CBaseOutputPin::offerAllocator(IMemInputPin* input, IMemAllocator* candidate,
                                       ALLOCATOR_PROPERTIES required) {
    const HRESULT result = DecideBufferSize(candidate, &required);
    return FAILED(result) ? result : input->NotifyAllocator(candidate, FALSE);
}

HRESULT CBaseOutputPin::GetDeliveryBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                                          DWORD flags) {
    const auto agreed = copied(allocator_);
    return agreed == nullptr ? E_NOINTERFACE : agreed->GetBuffer(sample, start, stop, flags);
}

HRESULT CBaseOutputPin::Deliver(IMediaSample* sample) {
    const auto input = copied(inputPin_);
    return input == nullptr ? VFW_E_NOT_CONNECTED : input->Receive(sample);
}

HRESULT CBaseOutputPin::DeliverEndOfStream() {
    const auto receiver = GetConnected();
    return receiver == nullptr ? VFW_E_NOT_CONNECTED : receiver->EndOfStream();
}

HRESULT CBaseOutputPin::DeliverBeginFlush() {
    const auto receiver = GetConnected();
    return receiver == nullptr ? VFW_E_NOT_CONNECTED : receiver->BeginFlush();
}

HRESULT CBaseOutputPin::DeliverEndFlush() {
    const auto receiver = GetConnected();
    return receiver == nullptr ? VFW_E_NOT_CONNECTED : receiver->EndFlush();
}

HRESULT CBaseOutputPin::DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
    const auto receiver = GetConnected();
    return receiver == nullptr ? VFW_E_NOT_CONNECTED : receiver->NewSegment(start, stop, rate);
}

HRESULT CBaseOutputPin::EndOfStream() {
    return E_UNEXPECTED;
}

HRESULT CBaseOutputPin::BeginFlush() {
    return E_UNEXPECTED;
}

HRESULT CBaseOutputPin::EndFlush() {
    return E_UNEXPECTED;
}

}  // namespace mvrtpfec
