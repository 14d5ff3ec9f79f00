#include "sender/rtp_fec_filter.h"

#include <new>
#include <utility>

#include "core/composers.h"
#include "framework/guarded_entry.h"
#include "platform/wide_literal.h"

namespace mvrtpfec {

using platform::operator""_w;

CUnknown* CRtpFecFilter::CreateInstance(IUnknown* outer, HRESULT* result) {
    std::unique_ptr<CRtpFecFilter> filter;
    const HRESULT outcome = guardedEntry([&] {
        HRESULT pins = S_OK;
        try {
            filter = std::make_unique<CRtpFecFilter>(outer, &pins);
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        }
        return pins;
    });
    if (result != nullptr) *result = outcome;
    return FAILED(outcome) ? nullptr : filter.release();
}

CRtpFecFilter::CRtpFecFilter(IUnknown* outer, HRESULT* result)
    : CBaseFilter(nullptr, outer, &filterLock_, CLSID_RtpFecFilter),
      input_(this, &filterLock_, result),
      fecA_(this, &filterLock_, result, "FECA"_w),
      fecB_(this, &filterLock_, result, "FECB"_w) {
    Composers::drawUnused();
}

HRESULT CRtpFecFilter::NonDelegatingQueryInterface(REFIID riid, void** object) {
    if (riid == IID_IFECoverRTPConfig) return GetInterface(static_cast<IFECoverRTPConfig*>(this), object);
    return CBaseFilter::NonDelegatingQueryInterface(riid, object);
}

CBasePin* CRtpFecFilter::GetPin(int index) {
    switch (index) {
        case 0:
            return &input_;
        case 1:
            return &fecA_;
        case 2:
            return &fecB_;
        default:
            return nullptr;
    }
}

HRESULT CRtpFecFilter::Pause() {
    return guardedEntry([&] {
        const FILTER_STATE before = m_State;
        const HRESULT result = CBaseFilter::Pause();
        if (before != State_Running) {
            createComposers();
            return S_OK;
        }
        protection_.replaceBoth(nullptr, nullptr);
        return result;
    });
}

/// Throws for a matrix that isn't one, and then leaves everything as it was.
void CRtpFecFilter::createComposers() {
    const auto deliverTo = [](CRtpFecFilterOutputPin& pin) {
        return [&pin](const std::shared_ptr<RtpPacket>& packet) { pin.deliverPacket(packet->view); };
    };
    const std::int32_t mode = mode_;
    Composers fresh = Composers::make(deliverTo(fecA_), deliverTo(fecB_), mode, columns_, rows_);
    if (mode == fecBoth || mode == fecNone)
        protection_.replaceBoth(std::move(fresh.a), std::move(fresh.b));
    else
        protection_.replaceA(std::move(fresh.a));
}

void CRtpFecFilter::processPacket(IMediaSample* sample) {
    if (sample == nullptr) {
        fecA_.DeliverEndOfStream();
        fecB_.DeliverEndOfStream();
        return;
    }
    const LONG length = sample->GetActualDataLength();
    BYTE* data = nullptr;
    if (length < 0 || FAILED(sample->GetPointer(&data)) || data == nullptr) return;

    const ConstRtpPacketView media{data, static_cast<std::uint16_t>(length)};
    protection_.protect(media, mode_ == fecBoth);
}

HRESULT CRtpFecFilter::SetColumns(std::int32_t columns) {
    return configure(columns_, columns, 0, 20);
}

HRESULT CRtpFecFilter::SetRows(std::int32_t rows) {
    return configure(rows_, rows, 4, 20);
}

HRESULT CRtpFecFilter::SetMode(std::int32_t mode) {
    return configure(mode_, mode, fecNone, fecBoth);
}

HRESULT CRtpFecFilter::configure(std::atomic<std::int32_t>& value, std::int32_t wanted, std::int32_t low,
                                 std::int32_t high) {
    if (m_State != State_Stopped || wanted < low || wanted > high) return E_FAIL;
    value = wanted;
    return S_OK;
}

}  // namespace mvrtpfec
