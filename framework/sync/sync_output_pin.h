#pragma once

#include "framework/base/base_output_pin.h"
#include "framework/sync/sync_interfaces.h"
#include "framework/sync/sync_media_type.h"

namespace mvrtpfec {

/// Sends each reference that it is given as a clock sample.
class CSyncOutputPin : public CBaseOutputPin, public ISyncSink {
public:
    using CBaseOutputPin::CBaseOutputPin;

    HRESULT CheckMediaType(const CMediaType* type) override { return checkSyncMediaType(type); }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;

    /// On a streaming thread; waits for a free buffer. Nothing when the pin isn't connected; what fails is
    /// dropped.
    void SetReference(std::uint64_t clock, std::int64_t referenceTime) override;
    void ResetReference() override {}
};

}  // namespace mvrtpfec
