#pragma once

#include <algorithm>

#include "framework/base/mem_allocator.h"

namespace mvrtpfec {

/// A pool of buffers of at most so many bytes, whatever is asked for; its samples have every attribute set.
class LimitedAllocator final : public CMemAllocator {
public:
    explicit LimitedAllocator(LONG limit) : CMemAllocator(nullptr, nullptr), limit_(limit) {}

    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override {
        ALLOCATOR_PROPERTIES smaller = *request;
        smaller.cbAlign = 1;
        smaller.cbBuffer = std::min(smaller.cbBuffer, limit_);
        return CMemAllocator::SetProperties(&smaller, actual);
    }
    STDMETHODIMP GetBuffer(IMediaSample** buffer, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                           DWORD flags) override {
        const HRESULT result = CMemAllocator::GetBuffer(buffer, start, stop, flags);
        if (FAILED(result)) return result;
        REFERENCE_TIME times[] = {1, 2};
        (*buffer)->SetTime(&times[0], &times[1]);
        (*buffer)->SetSyncPoint(TRUE);
        (*buffer)->SetDiscontinuity(TRUE);
        return result;
    }

private:
    LONG limit_;
};

}  // namespace mvrtpfec
