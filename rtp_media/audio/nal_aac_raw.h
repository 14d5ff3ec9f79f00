#pragma once

#include <span>

#include "rtp_media/audio/nal_aac.h"

namespace mvrtpfec {

/// None also when the sizes in the unit don't add up to it, or its configuration doesn't tell rate and
/// channels.
std::optional<AacFrame> parseAacRawFrame(std::span<const std::uint8_t> unit);

/// The configuration of a unit for which there is a frame.
std::span<const std::uint8_t> aacRawConfig(std::span<const std::uint8_t> unit, const AacFrame& frame);

/// A raw AAC frame with its framing, an AacRawRecord.
class NALAACRaw final : public NALAAC {
public:
    explicit NALAACRaw(std::int32_t capacity) : NALAAC(StreamType::aacRaw, capacity) {}

private:
    std::optional<AacFrame> parse() const override { return parseAacRawFrame(bytes()); }
};

}  // namespace mvrtpfec
