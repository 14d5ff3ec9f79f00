#pragma once

#include "core/rtp_packet.h"
#include "framework/base/base_output_pin.h"

namespace mvrtpfec {

class CRtpFecFilter;

/// "FECA" or "FECB" of the sender filter: one FEC packet a sample, without time stamps.
class CRtpFecFilterOutputPin final : public CBaseOutputPin {
public:
    CRtpFecFilterOutputPin(CRtpFecFilter* filter, CCritSec* lock, HRESULT* result, LPCWSTR name);

    /// S_OK for RTP packets, S_FALSE for anything else, E_POINTER for nothing.
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    /// 16 buffers of 2048 bytes; what is granted instead is taken as it is.
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;

    /// Passes the sample on only while the filter runs; it is dropped otherwise. Holds the filter lock.
    HRESULT Deliver(IMediaSample* sample) override;

    /// Copies a packet into a delivery buffer, for which it waits, and delivers it; downstream's answer
    /// doesn't matter. A packet longer than the buffer is dropped. Throws mvn::COMException when there is no
    /// buffer: the pin isn't connected, or the filter has been stopped.
    void deliverPacket(ConstRtpPacketView packet);
};

}  // namespace mvrtpfec
