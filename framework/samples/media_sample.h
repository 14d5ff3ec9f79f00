#pragma once

#include "framework/samples/oob_media_sample.h"

namespace mvrtpfec {

class CBaseAllocator;

/// A sample of an allocator's pool. Its last release takes all metadata, flags and the media type off it and
/// gives it back to the allocator, which outlives it.
class CMediaSample : public COOBMediaSample {
public:
    /// `name` and `result` are there for the framework's customary signature; neither is used.
    CMediaSample(const char* name, CBaseAllocator* allocator, HRESULT* result, BYTE* payload = nullptr,
                 LONG length = 0) noexcept;

    STDMETHODIMP_(ULONG) Release() override;

    /// The payload of the coming use; the sample does not own it. S_OK.
    HRESULT SetPointer(BYTE* payload, LONG length) noexcept;

private:
    friend class CBaseAllocator;

    /// The first reference of a use; nobody else has the sample yet.
    void startUse() noexcept { references_.store(1, std::memory_order_relaxed); }

    CBaseAllocator* allocator_;
    CMediaSample* next_ = nullptr;  ///< in the allocator's free list, under its lock
};

}  // namespace mvrtpfec
