#pragma once

#include <span>

#include "rtp_media/audio/nal_aac.h"

namespace mvrtpfec {

/// None also for a frame of several raw data blocks, which no packetizer splits.
std::optional<AacFrame> parseAdtsFrame(std::span<const std::uint8_t> unit);

/// An ADTS frame with its header.
class NALAACADTS final : public NALAAC {
public:
    explicit NALAACADTS(std::int32_t capacity) : NALAAC(StreamType::aacAdts, capacity) {}

private:
    std::optional<AacFrame> parse() const override { return parseAdtsFrame(bytes()); }
};

}  // namespace mvrtpfec
