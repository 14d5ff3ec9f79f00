#include "framework/sync/sync_output_pin.h"

#include <algorithm>

namespace mvrtpfec {

namespace {

bool writeReference(IMediaSample& sample, std::uint64_t clock, REFERENCE_TIME time) {
    BYTE* bytes = nullptr;
    if (FAILED(sample.GetPointer(&bytes)) || sample.GetSize() < syncSampleSize) return false;
    for (int i = 0; i < syncSampleSize; ++i) bytes[i] = static_cast<BYTE>(clock >> 8 * i);
    auto stop = static_cast<REFERENCE_TIME>(static_cast<std::uint64_t>(time) + 1);  // the last time wraps
    return SUCCEEDED(sample.SetActualDataLength(syncSampleSize)) && SUCCEEDED(sample.SetTime(&time, &stop));
}

}  // namespace

HRESULT CSyncOutputPin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
    constexpr LONG leastCount = 4;
    constexpr LONG leastSize = 16;
    if (allocator == nullptr || request == nullptr) return E_POINTER;
    request->cBuffers = std::max(request->cBuffers, leastCount);
    request->cbBuffer = std::max(request->cbBuffer, leastSize);
    request->cbAlign = std::max(request->cbAlign, LONG{1});
    request->cbPrefix = 0;
    ALLOCATOR_PROPERTIES actual{};
    return allocator->SetProperties(request, &actual);
}

void CSyncOutputPin::SetReference(std::uint64_t clock, std::int64_t referenceTime) {
    if (!IsConnected()) return;
    CComPtr<IMediaSample> sample;
    if (FAILED(GetDeliveryBuffer(&sample, nullptr, nullptr, 0)) || !sample) return;
    if (writeReference(*sample, clock, referenceTime)) Deliver(sample);
}

}  // namespace mvrtpfec
