#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "core/rtp_packet.h"

namespace mvrtpfec {

/// A receiver releases a media packet when others come a window behind it. At the end of a stream padding
/// packets take their place: this knows where the stream stands, makes them, and tells them from media.
class StreamDrain {
public:
    /// Most that are ever needed; the widest window a decoder can learn holds fewer.
    static constexpr std::uint32_t maxPadding = 65535;

    /// One packet on its way to the receiver.
    void observe(ConstRtpPacketView packet);
    /// The stream is over: what follows is padding. False when no media packet came.
    bool begin();
    /// The padding packet of that place, a bare header: no sender makes a media packet without payload.
    std::unique_ptr<RtpPacket> padding(std::uint32_t index) const;
    bool isPadding(ConstRtpPacketView packet) const;

private:
    void observeMedia(ConstRtpPacketView media);
    void observeFec(ConstRtpPacketView fec);

    std::optional<std::uint16_t> newest_;  ///< highest media number seen, or named by an FEC packet
    std::optional<std::uint16_t> behind_;  ///< a number behind the newest, seen last
    std::uint32_t ssrc_ = 0;
    std::optional<std::uint16_t> first_;
};

}  // namespace mvrtpfec
