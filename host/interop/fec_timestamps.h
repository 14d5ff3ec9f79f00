#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "core/rtp_packet.h"

namespace mvrtpfec {

/// Our FEC packets bear the timestamp of the first packet they protect, by which one of another run of the
/// source is known. Other senders' bear the time of sending (RFC 2733, section 4), a little later; theirs are
/// given ours. One thread.
class FecTimestamps {
public:
    void note(ConstRtpPacketView media);
    /// A valid FEC packet, behind the media that came before it.
    void settle(RtpPacketView fec);

private:
    struct Stamp {
        std::uint16_t number = 0;
        std::uint32_t timestamp = 0;
        bool isSet = false;
    };

    std::optional<std::uint32_t> timestampOf(std::uint16_t number) const;

    static constexpr std::size_t remembered = 1024;

    std::array<Stamp, remembered> stamps_{};
    int laterInARow_ = 0;  ///< FEC packets stamped later than their first packet
};

}  // namespace mvrtpfec
