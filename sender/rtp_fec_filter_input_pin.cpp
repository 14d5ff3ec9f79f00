#include "sender/rtp_fec_filter_input_pin.h"

#include "framework/guarded_entry.h"
#include "platform/wide_literal.h"
#include "sender/rtp_fec_filter.h"
#include "sender/rtp_packet_type.h"

namespace mvrtpfec {

using platform::operator""_w;

CRtpFecFilterInputPin::CRtpFecFilterInputPin(CRtpFecFilter* filter, CCritSec* lock, HRESULT* result)
    : CBaseInputPin(nullptr, filter, lock, result, "Input"_w) {}

HRESULT CRtpFecFilterInputPin::CheckMediaType(const CMediaType* type) {
    return checkRtpPacketType(*type);
}

HRESULT CRtpFecFilterInputPin::GetMediaType(int position, CMediaType* type) {
    return offerRtpPacketType(position, *type);
}

HRESULT CRtpFecFilterInputPin::Receive(IMediaSample* sample) {
    return guardedEntry([&] {
        const HRESULT result = CBaseInputPin::Receive(sample);
        if (result == S_OK) process(sample);
        return result;
    });
}

HRESULT CRtpFecFilterInputPin::EndOfStream() {
    return guardedEntry([&] {
        const HRESULT result = CBaseInputPin::EndOfStream();
        if (SUCCEEDED(result)) process(nullptr);
        return result;
    });
}

void CRtpFecFilterInputPin::process(IMediaSample* sample) {
    try {
        static_cast<CRtpFecFilter*>(m_pFilter)->processPacket(sample);
    } catch (const mvn::COMException&) {  // FEC that can't be sent doesn't hold up the media.
    }
}

}  // namespace mvrtpfec
