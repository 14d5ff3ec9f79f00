#include "receiver/rtp_fec_in_output_pin.h"

#include <algorithm>

#include "core/rtp_packet.h"
#include "framework/guarded_entry.h"
#include "framework/samples/media_data_impl.h"
#include "platform/wide_literal.h"
#include "receiver/rtp_fec_in.h"

namespace mvrtpfec {

using platform::operator""_w;

namespace {

constexpr LONG leastBuffers = 100;
constexpr LONG bufferSize = maxMediaPacketSize;
constexpr LONG leastAlignment = 32;

}  // namespace

CRtpFecInOutputPin::CRtpFecInOutputPin(CRtpFecIn* filter, HRESULT* result)
    : CBaseOutputPin(nullptr, filter, &lock_, result, "Output"_w), owner_(*filter) {}

HRESULT CRtpFecInOutputPin::CheckMediaType(const CMediaType* type) {
    if (type == nullptr) return E_POINTER;
    return type->majortype == MEDIATYPE_Stream && type->subtype == MEDIASUBTYPE_MPEG2_TRANSPORT ? S_OK
                                                                                                : S_FALSE;
}

HRESULT CRtpFecInOutputPin::GetMediaType(int position, CMediaType* type) {
    if (position < 0) return E_INVALIDARG;
    if (position > 0) return VFW_S_NO_MORE_ITEMS;
    if (type == nullptr) return E_POINTER;
    *type = CMediaType(MEDIATYPE_Stream, MEDIASUBTYPE_MPEG2_TRANSPORT);
    return S_OK;
}

HRESULT CRtpFecInOutputPin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
    request->cBuffers = std::max(request->cBuffers, leastBuffers);
    request->cbBuffer = bufferSize;
    request->cbAlign = std::max(request->cbAlign, leastAlignment);
    request->cbPrefix = 0;
    ALLOCATOR_PROPERTIES granted{};
    const HRESULT result = allocator->SetProperties(request, &granted);
    if (FAILED(result)) return result;
    if (granted.cbBuffer < bufferSize || granted.cBuffers < request->cBuffers) return E_FAIL;
    owner_.Statistics().RegisterBuffer(rtpFecInPool);
    return S_OK;
}

HRESULT CRtpFecInOutputPin::Active() {
    // Without the pin's lock, which a delivery that blocks may hold.
    lastStartTime_ = none;
    return CBaseOutputPin::Active();
}

HRESULT CRtpFecInOutputPin::Deliver(IMediaData2* data) {
    return guardedEntry([&] {
        auto* wrapper = dynamic_cast<MediaData2*>(data);
        if (data != nullptr && wrapper == nullptr) return E_INVALIDARG;
        const CAutoLock lock(&lock_);
        if (wrapper == nullptr) {
            const HRESULT result = DeliverEndOfStream();
            return FAILED(result) ? result : S_OK;
        }
        REFERENCE_TIME start = lastStartTime_;
        REFERENCE_TIME stop = 0;
        wrapper->GetTime(&start, &stop);
        lastStartTime_ = start;
        const HRESULT result = Deliver(wrapper->GetSample());
        return FAILED(result) ? result : S_OK;
    });
}

HRESULT CRtpFecInOutputPin::getBuffer(CComPtr<IMediaSample>& sample, REFERENCE_TIME* start,
                                      REFERENCE_TIME* stop, DWORD flags) {
    const HRESULT result = GetDeliveryBuffer(&sample, start, stop, flags | AM_GBF_NOWAIT);
    if (result != VFW_E_TIMEOUT) return result;
    owner_.Statistics().NotifyBufferFull(rtpFecInPool);
    return GetDeliveryBuffer(&sample, start, stop, flags);
}

HRESULT CRtpFecInOutputPin::GetDeliveryBuffer(IMediaData2** data, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                                              DWORD flags) {
    if (data == nullptr) return E_POINTER;
    return guardedEntry([&] {
        CComPtr<IMediaSample> sample;
        HRESULT result = getBuffer(sample, start, stop, flags);
        if (FAILED(result)) return result;
        CComPtr<IMediaSample2> extended;
        void* found = nullptr;
        result = sample->QueryInterface(IID_IMediaSample2, &found);
        if (FAILED(result)) return result;
        extended.Attach(static_cast<IMediaSample2*>(found));
        CreateMediaData2(extended, data);
        return *data != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

}  // namespace mvrtpfec
