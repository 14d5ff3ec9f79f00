#include "framework/samples/media_sample.h"

#include "framework/base/base_allocator.h"

namespace mvrtpfec {

CMediaSample::CMediaSample(const char*, CBaseAllocator* allocator, HRESULT*, BYTE* payload,
                           LONG length) noexcept
    : COOBMediaSample(payload, length), allocator_(allocator) {}

STDMETHODIMP_(ULONG) CMediaSample::Release() {
    // Whoever holds the only reference is alone with the count.
    const bool isLast = references_.load(std::memory_order_acquire) == 1;
    if (isLast) references_.store(0, std::memory_order_relaxed);
    const LONG left = isLast ? 0 : --references_;
    if (left > 0) return static_cast<ULONG>(left);
    resetAttributes();
    allocator_->ReleaseBuffer(this);  // the sample and its allocator may be gone after this
    return 0;
}

HRESULT CMediaSample::SetPointer(BYTE* payload, LONG length) noexcept {
    setPayload(payload, length, length);
    return S_OK;
}

}  // namespace mvrtpfec
