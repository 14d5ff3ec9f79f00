#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// One RTP packet as a packetizer gives it out: the fixed header (RFC 3550, 5.1), bytes of the payload
/// format, and the units that the payload consists of.
class RTPMediaPacket : NonCopyable {
public:
    static constexpr std::uint64_t timestampModulus = std::uint64_t{1} << 32;
    static constexpr std::uint64_t sequenceModulus = 65536;
    static constexpr std::size_t headerSize = 12;

    /// What serialize wrote, in bytes.
    struct Sizes {
        std::size_t total = 0;
        std::size_t prefix = 0;
        std::size_t payload = 0;
    };

    /// A packet of one chunk, whose first `payloadOffset` bytes aren't sent; a negative offset skips none.
    RTPMediaPacket(std::unique_ptr<NAL> chunk, std::int32_t payloadOffset, std::vector<std::uint8_t> prefix,
                   std::uint32_t payloadType);

    void addChunk(std::unique_ptr<NAL> chunk) { chunks_.push_back(std::move(chunk)); }

    /// Writes the first four bytes of the header. Times in ticks of 90 kHz, whatever `clockRate` (Hz) says.
    void stamp(std::uint64_t sequence, bool marker, std::uint64_t clockRate, std::uint64_t pts,
               std::uint64_t ptsOrDts, bool discontinuity);

    /// Writes the RTP timestamp: the presentation time in the clock rate, plus `offset`, modulo 2^32. Only
    /// for a stamped packet.
    void writeTimestamp(std::uint32_t offset);

    /// Bytes that serialize will write.
    std::size_t serializedSize() const noexcept;

    /// Writes header, prefix and payload to `destination`, which has room for serializedSize() bytes.
    Sizes serialize(std::uint8_t* destination, std::uint32_t ssrc);

    std::uint64_t pts() const noexcept { return pts_; }
    /// The decode time when the packetizer was made to carry it, else the presentation time; 90 kHz.
    std::uint64_t ptsOrDts() const noexcept { return ptsOrDts_; }
    bool discontinuity() const noexcept { return discontinuity_; }
    std::uint64_t rtpSequence() const noexcept { return rtpSequence_; }
    std::uint64_t clockRate() const noexcept { return clockRate_; }
    bool stamped() const noexcept { return stamped_; }
    bool timestampWritten() const noexcept { return timestampWritten_; }
    bool marker() const noexcept { return (header_[1] & 0x80) != 0; }
    std::uint32_t payloadType() const noexcept { return payloadType_; }
    std::int32_t payloadOffset() const noexcept { return payloadOffset_; }
    std::span<const std::unique_ptr<NAL>> chunks() const noexcept { return chunks_; }
    std::span<const std::uint8_t> payloadPrefix() const noexcept { return payloadPrefix_; }

private:
    /// Nothing until it is stamped.
    std::span<const std::uint8_t> header() const noexcept {
        return {header_.data(), stamped_ ? headerSize : 0};
    }

    std::vector<std::unique_ptr<NAL>> chunks_;
    std::int32_t payloadOffset_;
    std::uint64_t pts_ = 0;
    std::uint64_t ptsOrDts_ = 0;
    bool discontinuity_ = false;
    std::uint64_t rtpSequence_ = 0;
    std::uint64_t clockRate_ = 0;
    bool stamped_ = false;
    bool timestampWritten_ = false;
    std::array<std::uint8_t, headerSize> header_{};
    std::vector<std::uint8_t> payloadPrefix_;
    std::uint32_t payloadType_;
};

/// Where a packetizer puts its packets. Called on the packetizer's thread, in sequence order.
class RTPPacketListener {
public:
    virtual ~RTPPacketListener() = default;
    virtual void onPacket(std::unique_ptr<RTPMediaPacket> packet) = 0;
    virtual void onEndOfStream() = 0;
};

}  // namespace mvrtpfec
