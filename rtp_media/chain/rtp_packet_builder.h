#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "rtp_media/chain/nal.h"
#include "rtp_media/chain/rtp_media_packet.h"

namespace mvrtpfec {

/// What becomes of H.264 parameter sets, and whether SEI and delimiters are sent.
enum class ParameterSetMode : std::uint32_t {
    sdp = 0,        ///< to the SDP only, as received
    rewritten = 1,  ///< to the SDP only, written anew from their fields
    inBand = 2,     ///< to the SDP and into the stream, as SEI and access unit delimiters are
};

/// Which time an H.264 packet carries in ptsOrDts. Only `decode` does what it says; other numbers mean
/// presentation.
enum class TimestampMode : std::uint32_t { presentation = 0, decode = 1 };

/// A packetizer: turns the units of one stream into RTP packets and into the attributes of its SDP media
/// description. Driven by the parser's thread; packets go to the listener in the same call. A unit that is of
/// another type, malformed or untimed is dropped without a word.
class RTPPacketBuilder : public NALListener {
public:
    /// Most bytes of a unit that one packet carries.
    static constexpr std::uint32_t maxPayload = 1300;
    static constexpr std::uint64_t videoClockRate = 90000;

    /// The packetizer for a stream of this type, null when there is none. `listener` isn't owned and stands
    /// until the packetizer is gone; `port` is kept for the owner. The last two are for H.264 alone.
    static std::unique_ptr<RTPPacketBuilder> create(StreamType type, std::uint32_t payloadType,
                                                    std::uint32_t port, RTPPacketListener* listener,
                                                    ParameterSetMode parameterSetMode,
                                                    TimestampMode timestampMode);

    /// Most packets a second that the stream can need.
    virtual std::uint32_t getMaxPacketRate() const = 0;

    /// Hands the packet on and counts it; null passes the end of the stream on and counts nothing.
    virtual void deliverPacket(std::unique_ptr<RTPMediaPacket> packet);

    std::uint32_t port() const noexcept { return port_; }
    std::uint32_t payloadType() const noexcept { return payloadType_; }
    std::uint64_t sequenceCounter() const noexcept { return sequenceCounter_; }
    /// Whether sdpAttributes() is complete.
    bool sdpReady() const noexcept { return sdpReady_.load(std::memory_order_acquire); }
    /// Lines of a media description (RFC 8866, 5.13) with a backslash between them and none behind the last.
    const std::string& sdpAttributes() const noexcept { return sdpAttributes_; }

protected:
    RTPPacketBuilder(std::uint32_t payloadType, std::uint32_t port, RTPPacketListener* listener)
        : port_(port), listener_(listener), payloadType_(payloadType) {}

    /// The attributes are complete and stay as they are.
    void setSdpAttributes(std::string attributes);

private:
    std::uint32_t port_;
    std::atomic<bool> sdpReady_{false};  ///< set once, behind the attributes, which other threads read then
    std::string sdpAttributes_;
    RTPPacketListener* listener_;
    std::uint32_t payloadType_;
    std::uint64_t sequenceCounter_ = 0;
};

}  // namespace mvrtpfec
