#include "rtp_media/chain/rtp_media_packet.h"

#include <cstring>

#include "core/big_endian.h"

namespace mvrtpfec {

namespace {

std::uint8_t* copyTo(std::uint8_t* destination, std::span<const std::uint8_t> bytes) {
    if (!bytes.empty()) std::memcpy(destination, bytes.data(), bytes.size());
    return destination + bytes.size();
}

}  // namespace

RTPMediaPacket::RTPMediaPacket(std::unique_ptr<NAL> chunk, std::int32_t payloadOffset,
                               std::vector<std::uint8_t> prefix, std::uint32_t payloadType)
    : payloadOffset_(payloadOffset), payloadPrefix_(std::move(prefix)), payloadType_(payloadType) {
    chunks_.push_back(std::move(chunk));
}

void RTPMediaPacket::stamp(std::uint64_t sequence, bool marker, std::uint64_t clockRate, std::uint64_t pts,
                           std::uint64_t ptsOrDts, bool discontinuity) {
    pts_ = pts;
    ptsOrDts_ = ptsOrDts;
    discontinuity_ = discontinuity;
    rtpSequence_ = sequence;
    clockRate_ = clockRate;
    header_[0] = 0x80;
    header_[1] = static_cast<std::uint8_t>((marker ? 0x80U : 0U) | payloadType_);
    writeBigEndian16(&header_[2], static_cast<std::uint16_t>(sequence % sequenceModulus));
    stamped_ = true;
}

void RTPMediaPacket::writeTimestamp(std::uint32_t offset) {
    // pts x rate / 90000 in two parts, since the product may not fit.
    const std::uint64_t ticks = pts_ / 90000 * clockRate_ + pts_ % 90000 * clockRate_ / 90000;
    writeBigEndian32(&header_[4], static_cast<std::uint32_t>((ticks + offset) % timestampModulus));
    timestampWritten_ = true;
}

std::size_t RTPMediaPacket::serializedSize() const noexcept {
    std::size_t size = header().size() + payloadPrefix_.size();
    for (const auto& chunk : chunks_) size += chunk->size();
    return payloadOffset_ > 0 ? size - static_cast<std::size_t>(payloadOffset_) : size;
}

RTPMediaPacket::Sizes RTPMediaPacket::serialize(std::uint8_t* destination, std::uint32_t ssrc) {
    writeBigEndian32(&header_[8], ssrc);
    std::uint8_t* at = copyTo(destination, header());
    at = copyTo(at, payloadPrefix_);
    const std::uint8_t* const payload = at;
    std::size_t skip = payloadOffset_ > 0 ? static_cast<std::size_t>(payloadOffset_) : 0;
    for (const auto& chunk : chunks_) {
        at = copyTo(at, chunk->bytes().subspan(skip));
        skip = 0;
    }
    return {static_cast<std::size_t>(at - destination), payloadPrefix_.size(),
            static_cast<std::size_t>(at - payload)};
}

}  // namespace mvrtpfec
