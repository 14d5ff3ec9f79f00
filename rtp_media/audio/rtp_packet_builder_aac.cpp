#include "rtp_media/audio/rtp_packet_builder_aac.h"

#include <utility>

namespace mvrtpfec {

void RTPPacketBuilderAAC::send(std::unique_ptr<RTPMediaPacket> packet, const SampleTiming& timing) {
    const auto pts = static_cast<std::uint64_t>(timing.pts);
    packet->stamp(sequenceCounter(), true, sampleRate(), pts, pts, timing.discontinuity != 0);
    deliverPacket(std::move(packet));
}

}  // namespace mvrtpfec
