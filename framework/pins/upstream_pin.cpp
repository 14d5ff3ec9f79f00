#include "framework/pins/upstream_pin.h"

#include "framework/guarded_entry.h"
#include "framework/samples/media_data_impl.h"

namespace mvrtpfec {

HRESULT UpStreamPin::Deliver(IMediaData* data) {
    IMediaSample* sample = sampleOf(data);
    if (sample == nullptr) return data == nullptr ? E_POINTER : E_INVALIDARG;
    return guardedEntry([&] { return pin_->Deliver(sample); });
}

HRESULT UpStreamPin::GetDeliveryBuffer(IMediaData** data, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                                       DWORD flags) {
    if (data == nullptr) return E_POINTER;
    CComPtr<IMediaSample> sample;
    const HRESULT result = guardedEntry([&] { return pin_->GetDeliveryBuffer(&sample, start, stop, flags); });
    if (result != S_OK) return result;
    IMediaData* wrapper = nullptr;
    CreateMediaData(sample, &wrapper);
    if (wrapper == nullptr) return E_OUTOFMEMORY;
    *data = wrapper;
    return S_OK;
}

HRESULT UpStreamPin::DeliverEndOfStream() {
    return guardedEntry([&] { return pin_->DeliverEndOfStream(); });
}

HRESULT UpStreamPin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
    return guardedEntry([&] { return pin_->DecideBufferSize(allocator, request); });
}

HRESULT UpStreamPin::Active() {
    return guardedEntry([&] { return pin_->Active(); });
}

HRESULT UpStreamPin::Inactive() {
    return guardedEntry([&] { return pin_->Inactive(); });
}

}  // namespace mvrtpfec
