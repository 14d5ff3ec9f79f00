#include "host/live/reception_meter.h"

#include <cstdlib>

#include "core/same_run.h"
#include "core/serial_distance.h"

namespace mvrtpfec {

namespace {

std::int64_t ticksOf(SteadyTime time) {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 90000>>;
    return std::chrono::duration_cast<Ticks>(time.time_since_epoch()).count();
}

std::int64_t nanosecondsOf(SteadyTime time) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count();
}

}  // namespace

bool ReceptionMeter::arrive(ConstRtpPacketView packet, SteadyTime now) {
    const bool isMedia = packet.isValid() && packet.payloadType() == mediaPayloadType;
    if (isMedia) arriveMedia(packet, now);
    if (isMedia || (packet.isValid() && fec_.note(packet))) return true;
    arriveForeign(packet);
    return false;
}

void ReceptionMeter::arriveMedia(ConstRtpPacketView media, SteadyTime now) {
    ++figures_.media;
    figures_.mediaBytes += media.length;
    const std::uint16_t number = media.sequenceNumber();
    const bool isElsewhere = latest_ && std::abs(serialDistance(*latest_, number)) > sameRun;
    if (isElsewhere || media.ssrc() != ssrc_) transit_.reset();
    latest_ = number;
    ssrc_ = media.ssrc();
    updateJitter(media.timestamp(), now);
    arrivals_[number] = nanosecondsOf(now);
}

/// RTP by its version; the types of RTCP are no payload types (RFC 5761, section 4).
void ReceptionMeter::arriveForeign(ConstRtpPacketView packet) {
    ++figures_.foreign;
    if (packet.length < rtpHeaderSize || packet.data[0] >> 6 != versionTwo >> 6) return;
    const bool isReport = packet.payloadType() >= 64 && packet.payloadType() < 96;
    if (!isReport) figures_.foreignPayloadType = packet.payloadType();
}

ReceptionFigures ReceptionMeter::figures() const {
    ReceptionFigures figures = figures_;
    figures.fec = fec_.figures();
    return figures;
}

void ReceptionMeter::updateJitter(std::uint32_t timestamp, SteadyTime now) {
    constexpr std::int64_t ticksPerSecond = 90000;
    const std::int64_t transit =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(ticksOf(now)) - timestamp);
    if (transit_) jitter_ += std::abs(static_cast<std::int32_t>(transit - *transit_)) - (jitter_ + 8) / 16;
    transit_ = transit;
    figures_.jitter = std::chrono::nanoseconds(jitter_ * 1'000'000'000 / 16 / ticksPerSecond);
}

void ReceptionMeter::deliver(ConstRtpPacketView media, SteadyTime now) {
    const std::int64_t arrived = arrivals_[media.sequenceNumber()].exchange(0);
    if (arrived == 0) return;
    const std::int64_t underWay = nanosecondsOf(now) - arrived;
    std::int64_t longest = latency_;
    while (underWay > longest && !latency_.compare_exchange_weak(longest, underWay)) {
    }
}

}  // namespace mvrtpfec
