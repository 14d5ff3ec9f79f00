#pragma once

#include <array>
#include <deque>
#include <memory>
#include <string>

#include "rtp_media/chain/rtp_packet_builder.h"
#include "rtp_media/h264/nal_h264_manager.h"

namespace mvrtpfec {

/// H.264 (RFC 6184, packetization-mode 1): single NAL units and FU-A, no aggregation. The packets of an
/// access unit wait until a unit that is no slice closes it, so that the last one gets the marker;
/// consecutive pictures without such a unit between them are one. Without timing in the VUI of the first
/// parameter set nothing is sent. A picture's time is its sample's, or else what the SEI messages tell, or
/// else one frame after the slice before. Where the messages' count breaks off and begins anew, the times
/// go on from there.
class RTPPacketBuilderH264 final : public RTPPacketBuilder {
public:
    RTPPacketBuilderH264(std::uint32_t payloadType, std::uint32_t port, RTPPacketListener* listener,
                         ParameterSetMode parameterSetMode, TimestampMode timestampMode);

    void onNAL(std::unique_ptr<NAL> unit) override;
    void onEndOfStream() override;
    /// One packet a frame and one for each full payload of the bit rate.
    std::uint32_t getMaxPacketRate() const override;

private:
    bool take(NAL& unit);
    bool takeSlice(NAL& unit);
    bool takeSei(NAL& unit);
    bool takeSps(NAL& unit);
    bool takePps(NAL& unit);
    std::optional<NALH264Manager::Times> timesToldFor(NAL& unit);
    void setTimes(const SampleTiming& timing, const std::optional<NALH264Manager::Times>& told);

    void describe();
    void closeAccessUnit();
    void endOverlongQueue();
    void packetize(std::unique_ptr<NAL> unit);
    void fragment(const NAL& unit, NAL::Header header);
    void queue(std::unique_ptr<NAL> chunk, std::int32_t payloadOffset, std::vector<std::uint8_t> prefix);

    bool isInBand() const { return parameterSetMode_ == ParameterSetMode::inBand; }

    ParameterSetMode parameterSetMode_;
    bool accessUnitPending_ = false;
    std::uint64_t pts_ = 0;
    std::uint64_t dts_ = 0;
    bool firstPacketDiscontinuity_ = false;
    std::deque<std::unique_ptr<RTPMediaPacket>> queue_;
    bool spsSeen_ = false;
    std::string spsBase64_;
    std::array<std::uint8_t, 3> profileLevelId_{};
    bool ppsSeen_ = false;
    std::string ppsBase64_;
    // Read by whoever describes the stream once it is described, and set no more then.
    std::uint32_t bitRate_ = 0;
    std::uint32_t timeScale_ = 0;
    std::uint32_t frameTicks_ = 1;
    NALH264Manager manager_;
    TimestampMode timestampMode_;
};

}  // namespace mvrtpfec
