#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "core/rtp_packet.h"
#include "framework/base/base_filter.h"
#include "framework/base/com_ptr.h"
#include "host/graph/in_flight.h"
#include "host/graph/packet_output_pin.h"

namespace mvrtpfec {

/// Brings RTP packets into a graph, on one output pin for each stream. The host's thread is its streaming
/// thread: one that also changes the graph's state, never both at once.
class PacketSourceFilter final : public CBaseFilter {
public:
    /// With `inFlight` for the inputs of a receiver, in the order of the pins. Throws GraphError.
    static CComPtr<PacketSourceFilter> create(std::size_t pins,
                                              const std::shared_ptr<InFlight>& inFlight = nullptr);

    int GetPinCount() override;
    CBasePin* GetPin(int index) override;

    /// Delivers one packet of at least 12 bytes; its sample owns it until everybody has let go of it. With
    /// a receiver `moment` is the push's, and the call waits while too much is in flight.
    HRESULT deliver(std::size_t pin, std::unique_ptr<RtpPacket> packet, const Moment* moment = nullptr);
    /// Ends the stream on every pin, from the last to the first.
    HRESULT endStream();

    PacketSourceFilter(std::size_t pins, const std::shared_ptr<InFlight>& inFlight, HRESULT* result);

private:
    CCritSec lock_;
    std::vector<std::unique_ptr<PacketOutputPin>> pins_;
};

}  // namespace mvrtpfec
