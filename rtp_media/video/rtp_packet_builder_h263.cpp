#include "rtp_media/video/rtp_packet_builder_h263.h"

#include <algorithm>
#include <array>

#include "support/string_format.h"

namespace mvrtpfec {

namespace {

using mvn::stringFormat;

constexpr std::size_t shortestPicture = 5;
constexpr std::uint8_t extendedType = 0x1C;
/// The start code's zeros, whose place the payload header takes (RFC 4629, 5.1).
constexpr std::uint32_t impliedBytes = 2;
constexpr std::uint8_t pictureStartBit = 0x04;

struct FrameSize {
    int width;
    int height;
};

/// By source format (ITU-T H.263, 5.1.3); 0 by 0 where there is none.
constexpr std::array<FrameSize, 8> frameSizes{
    {{0, 0}, {128, 96}, {176, 144}, {352, 288}, {704, 576}, {1408, 1152}, {0, 0}, {0, 0}}};

}  // namespace

void RTPPacketBuilderH263::onNAL(std::unique_ptr<NAL> unit) {
    if (unit->streamType() != StreamType::h263) return;
    const auto bytes = unit->bytes();
    if (bytes.size() < shortestPicture || (bytes[4] & extendedType) == extendedType) return;
    const SampleTiming timing = in90k(unit->timing);
    if (!timing.hasPts) return;
    followTemporalReference(static_cast<std::uint8_t>(bytes[2] << 6 | bytes[3] >> 2));
    if (!sdpReady() && !describe(bytes[4] >> 2 & 7)) return;
    packetize(*unit, timing);
}

void RTPPacketBuilderH263::followTemporalReference(std::uint8_t reference) {
    if (reference < lastTemporalReference_) temporalReferenceWraps_ += 256;
    lastTemporalReference_ = reference;
}

/// False for a source format without a size of its own.
bool RTPPacketBuilderH263::describe(std::uint8_t sourceFormat) {
    const FrameSize size = frameSizes.at(sourceFormat);
    if (size.width == 0) return false;
    const int type = static_cast<int>(payloadType());
    setSdpAttributes(
        stringFormat("a=rtpmap:%d H263-2000/90000\\", type) +
        stringFormat("a=fmtp:%d PROFILE=%d; LEVEL=%d;\\", type, 0, 45) +
        stringFormat("a=X-predecbufsize:%d\\", 40960) + stringFormat("a=X-initpredecbufperiod:%d\\", 229500) +
        stringFormat("a=X-initpostdecbufperiod:%d\\", 229500) + stringFormat("a=X-decbyterate:%d\\", 16000) +
        stringFormat("a=framesize:%d %d-%d", type, size.width, size.height));
    return true;
}

void RTPPacketBuilderH263::packetize(const NAL& unit, const SampleTiming& timing) {
    const auto pts = static_cast<std::uint64_t>(timing.pts);
    for (std::uint32_t at = impliedBytes; at < unit.size(); at += maxPayload) {
        const bool first = at == impliedBytes;
        const std::uint32_t count = std::min(unit.size() - at, maxPayload);
        auto packet = std::make_unique<RTPMediaPacket>(
            NAL::fragmentOf(unit, at, count), 0,
            std::vector<std::uint8_t>{first ? pictureStartBit : std::uint8_t{0}, 0}, payloadType());
        packet->stamp(sequenceCounter(), at + count == unit.size(), videoClockRate, pts, pts,
                      first && timing.discontinuity != 0);
        deliverPacket(std::move(packet));
    }
}

}  // namespace mvrtpfec
