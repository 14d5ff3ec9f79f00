#include "sender/rtp_fec_filter_output_pin.h"

#include <algorithm>

#include "framework/base/com_ptr.h"
#include "sender/rtp_fec_filter.h"
#include "sender/rtp_packet_type.h"
#include "support/com_exception.h"

namespace mvrtpfec {

namespace {

void throwIfFailed(HRESULT result) {
    if (FAILED(result)) throw mvn::COMException(result);
}

}  // namespace

CRtpFecFilterOutputPin::CRtpFecFilterOutputPin(CRtpFecFilter* filter, CCritSec* lock, HRESULT* result,
                                               LPCWSTR name)
    : CBaseOutputPin(nullptr, filter, lock, result, name) {}

HRESULT CRtpFecFilterOutputPin::CheckMediaType(const CMediaType* type) {
    return type == nullptr ? E_POINTER : checkRtpPacketType(*type);
}

HRESULT CRtpFecFilterOutputPin::GetMediaType(int position, CMediaType* type) {
    return offerRtpPacketType(position, *type);
}

HRESULT CRtpFecFilterOutputPin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
    *request = {.cBuffers = 16, .cbBuffer = 2048, .cbAlign = 1, .cbPrefix = 0};
    ALLOCATOR_PROPERTIES granted{};
    const HRESULT result = allocator->SetProperties(request, &granted);
    return FAILED(result) ? result : S_OK;
}

HRESULT CRtpFecFilterOutputPin::Deliver(IMediaSample* sample) {
    CAutoLock lock(m_pLock);
    FILTER_STATE state = State_Stopped;
    const HRESULT result = m_pFilter->GetState(0, &state);
    if (FAILED(result) || state != State_Running) return result;
    return CBaseOutputPin::Deliver(sample);
}

void CRtpFecFilterOutputPin::deliverPacket(ConstRtpPacketView packet) {
    CComPtr<IMediaSample> sample;
    throwIfFailed(GetDeliveryBuffer(&sample, nullptr, nullptr, 0));
    BYTE* buffer = nullptr;
    throwIfFailed(sample != nullptr ? sample->GetPointer(&buffer) : E_POINTER);
    if (buffer == nullptr) throw mvn::COMException(E_POINTER);
    if (sample->GetSize() < LONG{packet.length}) return;
    std::copy_n(packet.data, packet.length, buffer);
    sample->SetActualDataLength(packet.length);
    Deliver(sample);
}

}  // namespace mvrtpfec
