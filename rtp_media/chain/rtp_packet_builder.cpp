#include "rtp_media/chain/rtp_packet_builder.h"

#include <utility>

namespace mvrtpfec {

void RTPPacketBuilder::deliverPacket(std::unique_ptr<RTPMediaPacket> packet) {
    if (packet == nullptr) {
        if (listener_ != nullptr) listener_->onEndOfStream();
        return;
    }
    if (listener_ != nullptr) listener_->onPacket(std::move(packet));
    ++sequenceCounter_;
}

void RTPPacketBuilder::setSdpAttributes(std::string attributes) {
    sdpAttributes_ = std::move(attributes);
    sdpReady_.store(true, std::memory_order_release);
}

}  // namespace mvrtpfec
