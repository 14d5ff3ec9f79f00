#include "framework/pins/output_pin_with_dynamic_media_type.h"

#include "framework/guarded_entry.h"
#include "framework/pins/announced_sample.h"

namespace mvrtpfec {

HRESULT COutputPinWithDynamicMediaType::Deliver(IMediaSample* sample) {
    if (sample == nullptr) return E_POINTER;
    return guardedEntry([&] {
        const HRESULT result =
            m_bTypeChangePending ? deliverAnnouncing(sample) : CBaseOutputPin::Deliver(sample);
        return FAILED(result) ? result : S_OK;
    });
}

HRESULT COutputPinWithDynamicMediaType::deliverAnnouncing(IMediaSample* sample) {
    if (!m_bTypeChangePending.exchange(false)) return CBaseOutputPin::Deliver(sample);
    AnnouncedSample announced;
    HRESULT result = announceConnection(*this, sample, announced);
    if (SUCCEEDED(result)) result = guardedEntry([&] { return SetMediaType(&announced.type); });
    if (SUCCEEDED(result)) return CBaseOutputPin::Deliver(announced.sample);
    m_bTypeChangePending = true;
    return result;
}

}  // namespace mvrtpfec
