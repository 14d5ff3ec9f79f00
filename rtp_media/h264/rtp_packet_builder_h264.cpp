#include "rtp_media/h264/rtp_packet_builder_h264.h"

#include <algorithm>
#include <utility>

#include "rtp_media/bits/bit_reader.h"
#include "rtp_media/bits/byte_text.h"
#include "rtp_media/bits/emulation_prevention.h"
#include "support/string_format.h"

namespace mvrtpfec {

namespace {

// nal_unit_type (ISO/IEC 14496-10, table 7-1).
constexpr std::uint8_t slice = 1;
constexpr std::uint8_t idrSlice = 5;
constexpr std::uint8_t sei = 6;
constexpr std::uint8_t sequenceParameterSet = 7;
constexpr std::uint8_t pictureParameterSet = 8;
constexpr std::uint8_t accessUnitDelimiter = 9;
constexpr std::uint8_t filler = 12;

// FU-A (RFC 6184, 5.8).
constexpr std::uint8_t fuA = 28;
constexpr std::uint8_t startBit = 0x80;
constexpr std::uint8_t endBit = 0x40;

/// One payload of a full packet in bits.
constexpr std::uint64_t payloadBits = 8 * RTPPacketBuilder::maxPayload;

/// Bytes of a slice that hold its header, of any size that a stream has use for.
constexpr std::size_t sliceHeaderBytes = 1024;

/// A queue of this length has gone through all sequence numbers: no access unit, but a stream without any
/// unit that ends one.
constexpr std::size_t longestQueue = RTPMediaPacket::sequenceModulus;

bool isVcl(std::uint8_t type) {
    return type == slice || type == idrSlice || type == filler;
}

/// The unit behind its start code.
std::span<const std::uint8_t> withoutStartCode(NAL& unit) {
    return unit.bytes().subspan(static_cast<std::size_t>(unit.header()->startCodeLength));
}

/// Its RBSP behind the header byte.
std::span<const std::uint8_t> rbspOf(NAL& unit) {
    return unit.rbsp().subspan(static_cast<std::size_t>(unit.header()->startCodeLength) + 1);
}

/// round(ticks x 90000 / scale), half away from zero.
std::uint64_t frameDuration(std::uint32_t ticks, std::uint32_t scale) {
    return (std::uint64_t{ticks} * 90000 * 2 + scale) / (std::uint64_t{scale} * 2);
}

}  // namespace

RTPPacketBuilderH264::RTPPacketBuilderH264(std::uint32_t payloadType, std::uint32_t port,
                                           RTPPacketListener* listener, ParameterSetMode parameterSetMode,
                                           TimestampMode timestampMode)
    : RTPPacketBuilder(payloadType, port, listener),
      parameterSetMode_(parameterSetMode),
      timestampMode_(timestampMode) {}

void RTPPacketBuilderH264::onNAL(std::unique_ptr<NAL> unit) {
    if (unit->streamType() != StreamType::h264 || !unit->header()) return;
    const std::uint8_t type = unit->header()->value & 0x1F;
    if (!isVcl(type) && accessUnitPending_) closeAccessUnit();
    if (!take(*unit)) return;
    if (queue_.empty()) firstPacketDiscontinuity_ = unit->timing.hasPts && unit->timing.discontinuity;
    packetize(std::move(unit));
    if (queue_.size() >= longestQueue) endOverlongQueue();
}

void RTPPacketBuilderH264::endOverlongQueue() {
    if (accessUnitPending_) {
        closeAccessUnit();
    } else {
        queue_.clear();  // no picture that they belong to has come, as none does without timing
    }
}

/// Learns from the unit; true when it is to be sent.
bool RTPPacketBuilderH264::take(NAL& unit) {
    switch (unit.header()->value & 0x1F) {
        case slice:
        case idrSlice:
        case filler:
            return takeSlice(unit);
        case sei:
            return takeSei(unit);
        case sequenceParameterSet:
            return takeSps(unit);
        case pictureParameterSet:
            return takePps(unit);
        case accessUnitDelimiter:
            return isInBand();
        default:
            return true;
    }
}

bool RTPPacketBuilderH264::takeSlice(NAL& unit) {
    if (timeScale_ == 0) return false;
    pts_ += frameDuration(frameTicks_, timeScale_);
    const SampleTiming timing = in90k(unit.timing);
    if (timing.hasPts) {
        manager_.resetAnchor(static_cast<std::uint64_t>(timing.pts));
    } else if (manager_.isAnchorLost()) {
        manager_.resetAnchor(pts_);
    }
    setTimes(timing, timesToldFor(unit));
    accessUnitPending_ = true;
    return true;
}

/// Filler is of the picture before it; its bytes would pass for a slice header that never ends.
std::optional<NALH264Manager::Times> RTPPacketBuilderH264::timesToldFor(NAL& unit) {
    const std::uint8_t header = unit.header()->value;
    if ((header & 0x1F) == filler) return manager_.pictureTimes();
    std::vector<std::uint8_t> start;
    const auto bytes = withoutStartCode(unit).subspan(1);
    removeEmulationPrevention(bytes.first(std::min(sliceHeaderBytes, bytes.size())), start);
    return manager_.takeSlice(start, header);
}

void RTPPacketBuilderH264::setTimes(const SampleTiming& timing,
                                    const std::optional<NALH264Manager::Times>& told) {
    if (timing.hasPts) {
        pts_ = static_cast<std::uint64_t>(timing.pts);
    } else if (told) {
        pts_ = told->presentation;
    }
    if (timing.hasDts) {
        dts_ = static_cast<std::uint64_t>(timing.dts);
    } else if (told) {
        dts_ = timing.hasPts ? told->decode - told->presentation + pts_ : told->decode;
    } else {
        dts_ = pts_;
    }
}

bool RTPPacketBuilderH264::takeSei(NAL& unit) {
    return manager_.takeSei(rbspOf(unit)) && isInBand();
}

bool RTPPacketBuilderH264::takeSps(NAL& unit) {
    if (spsSeen_) return isInBand();
    const auto received = withoutStartCode(unit);
    try {
        const AvcSps& sps = manager_.takeSps(rbspOf(unit));
        bitRate_ = avcBitRate(sps);
        if (!sps.hasTiming()) return false;
        timeScale_ = sps.vui.timeScale;
        frameTicks_ = 2 * sps.vui.numUnitsInTick;
        if (parameterSetMode_ == ParameterSetMode::rewritten) {
            std::vector<std::uint8_t> written = writeAvcSps(sps);
            written.insert(written.begin(), received.front());
            spsBase64_ = toBase64(insertEmulationPrevention(written));
        } else {
            spsBase64_ = toBase64(received);
        }
        profileLevelId_ = {sps.profileIdc, sps.constraintFlags, sps.levelIdc};
        spsSeen_ = true;
    } catch (const BitstreamException&) {
        return false;
    }
    return isInBand();
}

bool RTPPacketBuilderH264::takePps(NAL& unit) {
    if (!ppsSeen_) {
        ppsSeen_ = true;
        ppsBase64_ = toBase64(withoutStartCode(unit));
    }
    try {
        manager_.takePps(rbspOf(unit));
    } catch (const BitstreamException&) {
        // Sent all the same: the receiver's decoder may know more.
    }
    return isInBand();
}

void RTPPacketBuilderH264::describe() {
    const int type = static_cast<int>(payloadType());
    setSdpAttributes(mvn::stringFormat("a=rtpmap:%d H264/90000\\", type) +
                     mvn::stringFormat("a=fmtp:%d profile-level-id=%02x%02x%02x; sprop-parameter-sets=", type,
                                       profileLevelId_[0], profileLevelId_[1], profileLevelId_[2]) +
                     spsBase64_ + "," + ppsBase64_ + "; packetization-mode=1");
}

void RTPPacketBuilderH264::closeAccessUnit() {
    if (!sdpReady() && spsSeen_ && ppsSeen_) describe();
    const std::uint64_t ptsOrDts = timestampMode_ == TimestampMode::decode ? dts_ : pts_;
    for (bool first = true; !queue_.empty(); first = false) {
        auto packet = std::move(queue_.front());
        queue_.pop_front();
        packet->stamp(sequenceCounter(), queue_.empty(), videoClockRate, pts_, ptsOrDts,
                      first && firstPacketDiscontinuity_);
        deliverPacket(std::move(packet));
    }
    accessUnitPending_ = false;
}

void RTPPacketBuilderH264::packetize(std::unique_ptr<NAL> unit) {
    const NAL::Header header = *unit->header();
    if (unit->size() <= maxPayload) {
        queue(std::move(unit), header.startCodeLength, {});
    } else {
        fragment(*unit, header);
    }
}

/// The first fragment has the place of start code and header among its 1300 bytes, which aren't sent.
void RTPPacketBuilderH264::fragment(const NAL& unit, NAL::Header header) {
    const auto indicator = static_cast<std::uint8_t>((header.value & 0xE0) | fuA);
    const std::uint8_t type = header.value & 0x1F;
    const auto skipped = static_cast<std::uint32_t>(header.startCodeLength) + 1;
    if (skipped >= maxPayload) return;  // zeros all along: no unit of a byte stream
    queue(NAL::fragmentOf(unit, skipped, maxPayload - skipped), -1,
          {indicator, static_cast<std::uint8_t>(type | startBit)});
    std::uint32_t at = maxPayload;
    for (; unit.size() - at > maxPayload; at += maxPayload)
        queue(NAL::fragmentOf(unit, at, maxPayload), 0, {indicator, type});
    queue(NAL::fragmentOf(unit, at, unit.size() - at), 0,
          {indicator, static_cast<std::uint8_t>(type | endBit)});
}

void RTPPacketBuilderH264::queue(std::unique_ptr<NAL> chunk, std::int32_t payloadOffset,
                                 std::vector<std::uint8_t> prefix) {
    queue_.push_back(
        std::make_unique<RTPMediaPacket>(std::move(chunk), payloadOffset, std::move(prefix), payloadType()));
}

void RTPPacketBuilderH264::onEndOfStream() {
    if (accessUnitPending_) closeAccessUnit();
    deliverPacket(nullptr);
}

std::uint32_t RTPPacketBuilderH264::getMaxPacketRate() const {
    const std::uint64_t ticks = std::max<std::uint32_t>(1, frameTicks_);
    return static_cast<std::uint32_t>((timeScale_ + ticks - 1) / ticks +
                                      (bitRate_ + payloadBits - 1) / payloadBits);
}

}  // namespace mvrtpfec
