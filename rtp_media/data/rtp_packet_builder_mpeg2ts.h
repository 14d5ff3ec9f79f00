#pragma once

#include <vector>

#include "rtp_media/chain/rtp_packet_builder.h"

namespace mvrtpfec {

/// A transport stream (RFC 2250, 2): seven packets in one. Only timed ones are sent, so one of each sample of
/// the stream's parser.
class RTPPacketBuilderMpeg2ts final : public RTPPacketBuilder {
public:
    RTPPacketBuilderMpeg2ts(std::uint32_t payloadType, std::uint32_t port, RTPPacketListener* listener);

    void onNAL(std::unique_ptr<NAL> unit) override;
    void onEndOfStream() override;
    std::uint32_t getMaxPacketRate() const override { return 0xFFFFFFFF; }

private:
    void sendQueue();

    std::vector<std::unique_ptr<NAL>> queue_;
};

}  // namespace mvrtpfec
