#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "framework/base/com_ptr.h"
#include "framework/pins/output_pin.h"
#include "rtp_media/chain/rtp_packet_builder.h"
#include "rtp_media/send/packet_queue.h"
#include "rtp_media/send/send_clock.h"

namespace mvrtpfec {

/// Where a stream goes. The outputs aren't owned.
struct RTPStreamTarget {
    IOutputPin* mediaOutput = nullptr;
    IOutputPin* reportOutput = nullptr;
    std::uint32_t port = 0;     ///< for the SDP
    std::uint32_t bitRate = 0;  ///< bits per second, for the SDP
};

/// One stream of the scheduler: the packetizer's listener on the parser's thread, everything else on the
/// scheduler's.
class RTPStream final : public RTPPacketListener, NonCopyable {
public:
    /// A CNAME longer than the 255 bytes that its item can hold is cut there.
    RTPStream(std::uint32_t id, StreamType type, const RTPStreamTarget& target, std::string cname);

    /// The packetizer that feeds the stream, its own from here on; draws timestamp offset and SSRC.
    void start(std::unique_ptr<RTPPacketBuilder> packetizer);

    /// The parser's thread.
    void onPacket(std::unique_ptr<RTPMediaPacket> packet) override { queue_.append(std::move(packet)); }
    /// Ends both outputs; throws mvn::COMException when one fails.
    void onEndOfStream() override;

    StreamType streamType() const noexcept { return streamType_; }
    std::uint32_t id() const noexcept { return id_; }
    bool isVideo() const noexcept { return isVideo_; }
    bool isMaster() const noexcept { return isMaster_; }
    void setMaster(bool master) noexcept { isMaster_ = master; }
    std::uint32_t bitRate() const noexcept { return bitRate_; }
    std::uint32_t port() const noexcept { return port_; }
    RTPPacketBuilder& packetizer() const noexcept { return *packetizer_; }
    std::uint32_t timestampOffset() const noexcept { return timestampOffset_; }
    std::uint32_t ssrc() const noexcept { return ssrc_; }

    RTPMediaPacket* firstPacket() { return queue_.front(); }
    void dropFirstPacket() { queue_.popFront(); }
    void clearQueue() { queue_.clear(); }

    /// Whether a sender report should leave before the first packet, which tells a new stream its clock rate.
    bool isReportDue(const RTPMediaPacket& first, std::uint64_t now90k);
    /// Sends it. Throws mvn::COMException when the output fails or its buffer is too small; for the latter
    /// the next report is due in a second, as if this one had left.
    void sendReport(const SendClock& clock);

    /// Sends the first packet with a start time (100 ns) and takes it off the queue. One that is larger than
    /// the output's buffer is dropped, and the buffer's size returned. Throws mvn::COMException when the
    /// output fails; the packet stays then.
    std::optional<LONG> sendFirstPacket(REFERENCE_TIME time);

    /// What the check of a packet's time against the clock says.
    enum class Window { inside, outside, lost };
    /// `lost` when no packet has been within 10 s of the clock for more than 10 s.
    Window checkWindow(const RTPMediaPacket& packet, std::uint64_t now90k);

private:
    void noteReport(const SendClock& clock);

    StreamType streamType_;
    bool isVideo_;
    std::uint32_t id_;
    std::uint32_t timestampOffset_ = 0;
    std::unique_ptr<RTPPacketBuilder> packetizer_;
    PacketQueue queue_;
    bool inWindow_ = true;
    std::uint64_t outOfWindowSince_ = 0;  ///< 90 kHz
    IOutputPin* mediaOutput_;
    IOutputPin* reportOutput_;
    bool started_ = false;
    std::uint64_t lastReportTime_ = 0;  ///< 90 kHz
    std::uint32_t packetCount_ = 0;
    std::uint32_t octetCount_ = 0;
    std::uint32_t ssrc_ = 0;
    std::uint64_t clockRate_ = 0;
    std::uint32_t bitRate_;
    std::uint32_t port_;
    bool isMaster_ = false;
    std::string cname_;
};

}  // namespace mvrtpfec
