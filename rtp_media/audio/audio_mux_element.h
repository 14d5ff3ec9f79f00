#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "rtp_media/audio/stream_mux_config.h"

namespace mvrtpfec {

/// One LOAS AudioSyncStream frame (ISO/IEC 14496-3, 1.7.2.1) and the AudioMuxElement in it; positions in bits
/// from the frame's first.
struct LoasFrame {
    static constexpr std::uint8_t firstByte = 0x56;
    static constexpr std::size_t headerSize = 3;  ///< bytes

    StreamMuxConfig config;      ///< the one in force, its own or an earlier frame's
    bool configPresent = false;  ///< its own
    std::size_t configStart = 0;
    std::size_t configEnd = 0;
    /// PayloadLengthInfo and PayloadMux of all subframes, and the other data.
    std::size_t payloadStart = 0;
    std::size_t payloadEnd = 0;
};

/// The 11-bit sync word 2B7.
constexpr bool isLoasSync(std::uint8_t first, std::uint8_t second) {
    return first == LoasFrame::firstByte && (second & 0xE0) == 0xE0;
}

/// Length of the frame with these first bytes, the header's own included; a sync word has been seen.
constexpr std::size_t loasFrameLength(std::span<const std::uint8_t> bytes) {
    return LoasFrame::headerSize + static_cast<std::size_t>((bytes[1] & 0x1F) << 8 | bytes[2]);
}

/// `previous` is the configuration that a frame without its own stands on; null before there is one. Throws
/// BitstreamException for what is no such frame or lacks a configuration, Mpeg4AudioException for one that
/// isn't supported, ReservedMuxVersionException among these.
LoasFrame parseLoasFrame(std::span<const std::uint8_t> unit, const StreamMuxConfig* previous);

}  // namespace mvrtpfec
