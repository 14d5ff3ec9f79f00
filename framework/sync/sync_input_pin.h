#pragma once

#include "framework/base/base_input_pin.h"
#include "framework/sync/sync_media_type.h"
#include "framework/sync/synchronizer.h"

namespace mvrtpfec {

/// Takes in clock samples and tells how the clock relates to reference time.
///
/// The graph hears EC_SYNC_READY with the first sample since the filter was started.
class CSyncInputPin : public CBaseInputPin, public ISyncSource {
public:
    /// As CBaseInputPin; the clock as CSynchronizer.
    CSyncInputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* result, LPCWSTR name,
                  std::uint64_t clockModulus, std::uint64_t clockRate);

    HRESULT CheckMediaType(const CMediaType* type) override { return checkSyncMediaType(type); }
    HRESULT GetMediaType(int position, CMediaType* type) override;
    /// E_FAIL for a sample that isn't 8 bytes long. A failure to tell the graph is returned, but the
    /// reference stays.
    STDMETHODIMP Receive(IMediaSample* sample) override;
    HRESULT Active() override;
    HRESULT Inactive() override;

    bool IsSynchronized() override { return synchronizer_.IsSynchronized(); }
    std::int64_t ClockToReferenceTime(std::uint64_t clock) override {
        return synchronizer_.ClockToReferenceTime(clock);
    }

private:
    HRESULT tellGraph();

    CSynchronizer synchronizer_;
};

}  // namespace mvrtpfec
