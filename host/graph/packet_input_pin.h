#pragma once

#include <cstddef>

#include "framework/base/base_input_pin.h"
#include "host/graph/packet_taker.h"

namespace mvrtpfec {

/// An input pin for packets of any media type, as long as a datagram can be. It hands them to its filter.
class PacketInputPin final : public CBaseInputPin {
public:
    PacketInputPin(CBaseFilter* filter, CCritSec* lock, HRESULT* result, std::size_t index,
                   PacketTaker& taker);

    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }

    /// One whose buffers hold any datagram, whatever less is asked for.
    STDMETHODIMP GetAllocator(IMemAllocator** allocator) override;
    STDMETHODIMP Receive(IMediaSample* sample) override;
    STDMETHODIMP EndOfStream() override;

private:
    std::size_t index_;
    PacketTaker& taker_;
};

}  // namespace mvrtpfec
