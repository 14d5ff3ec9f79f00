#pragma once

#include <cstddef>

#include "core/rtp_packet.h"
#include "platform/hresult.h"

namespace mvrtpfec {

/// The filter behind PacketInputPins. Called on upstream's streaming threads; nothing is thrown.
struct PacketTaker {
    /// `packet` is as long as the sample and holds during the call.
    virtual HRESULT take(std::size_t pin, ConstRtpPacketView packet) noexcept = 0;
    /// No more packets come on this pin.
    virtual HRESULT endStream(std::size_t pin) noexcept = 0;

protected:
    ~PacketTaker() = default;
};

}  // namespace mvrtpfec
