#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>

#include "core/rtp_packet.h"
#include "host/io/ts_framer.h"
#include "host/live/clock.h"

namespace mvrtpfec {

/// Makes RTP packets (RFC 2250, section 2) of a transport stream in datagrams of any size. One to seven whole
/// packets become one RTP packet at once; packets that run across datagrams are put together again and leave
/// by sevens, or when the first of them has waited for long.
class TsWrapper {
public:
    using Output = std::function<void(std::unique_ptr<RtpPacket>)>;

    TsWrapper(std::uint32_t ssrc, std::uint16_t firstNumber, TsFramer::OnSkipped onSkipped, Output output);

    /// False while no transport packets are found.
    bool push(std::span<const std::uint8_t> datagram, SteadyTime now);
    /// To be called when nothing comes.
    void passTime(SteadyTime now);

    /// Whether the datagrams so far end with a packet.
    bool isBetweenPackets() const { return framer_.held() == 0; }
    /// Bytes passed over in the search that is going on.
    std::uint64_t skipping() const { return framer_.skipping(); }

private:
    void add(const TsPacket& packet, SteadyTime now);
    void sendGroup();
    void begin(SteadyTime now);
    void append(std::span<const std::uint8_t> bytes);

    TsFramer framer_;
    Output output_;
    std::uint32_t ssrc_;
    std::uint16_t number_;
    std::unique_ptr<RtpPacket> group_;  ///< being filled
    SteadyTime begun_;
};

}  // namespace mvrtpfec
