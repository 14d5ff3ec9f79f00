#include "host/live/reception_meter.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "core/fec_packet.h"
#include "core/serial_distance.h"
#include "host/io/same_run.h"

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
    if (!packet.isValid()) {
        ++figures_.foreign;
        return false;
    }
    packet.payloadType() == mediaPayloadType ? arriveMedia(packet, now) : arriveFec(packet);
    return true;
}

void ReceptionMeter::arriveMedia(ConstRtpPacketView media, SteadyTime now) {
    ++figures_.media;
    figures_.mediaBytes += media.length;
    const std::uint16_t number = media.sequenceNumber();
    const int ahead = newest_ ? serialDistance(*newest_, number) : 1;
    const bool restarts = newest_ && (media.ssrc() != ssrc_ || std::abs(ahead) > sameRun);
    if (restarts) {
        ++figures_.restarts;
        transit_.reset();
    } else if (ahead > 1) {
        figures_.longestGap = std::max(figures_.longestGap, static_cast<std::uint64_t>(ahead - 1));
    }
    if (restarts || ahead > 0) newest_ = number;
    ssrc_ = media.ssrc();
    updateJitter(media.timestamp(), now);
    arrivals_[number] = nanosecondsOf(now);
}

void ReceptionMeter::arriveFec(ConstRtpPacketView fec) {
    ++figures_.fec;
    const FecKind kind = fecKind(fec);
    const ProtectedRange range = protectedRange(fec);
    if (kind == FecKind::column) {
        figures_.columns = range.offset;
        figures_.rows = range.count;
        rowsAlone_ = 0;
    } else if (++rowsAlone_ > 2 * figures_.rows) {
        // Two matrices without a column FEC packet: there are none, or none yet.
        figures_.columns = range.count;
        figures_.rows = 0;
    }
    FecStream& stream = fecStreams_[static_cast<std::size_t>(kind)];
    const std::uint16_t number = fec.sequenceNumber();
    const int ahead = stream.next ? serialDistance(*stream.next, number) : 0;
    if (ahead > 0 && ahead <= sameRun) figures_.fecMissing += static_cast<std::uint64_t>(ahead);
    if (ahead >= 0 || ahead < -sameRun) stream.next = static_cast<std::uint16_t>(number + 1);
}

void ReceptionMeter::updateJitter(std::uint32_t timestamp, SteadyTime now) {
    constexpr std::int64_t ticksPerSecond = 90000;
    const std::int64_t transit =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(ticksOf(now)) - timestamp);
    if (transit_) jitter_ += std::abs(static_cast<std::int32_t>(transit - *transit_)) - (jitter_ + 8) / 16;
    transit_ = transit;
    figures_.jitter = std::chrono::nanoseconds(jitter_ * 1'000'000'000 / 16 / ticksPerSecond);
}

/// Numbers that are missing over a thousand were lost when the timestamps went on as long as they take; else
/// the source has jumped.
void ReceptionMeter::noteDelivered(const Delivered& now) {
    const auto before = std::exchange(delivered_, now);
    // A packet rebuilt from a row of one has no SSRC.
    if (!before || (before->ssrc != now.ssrc && before->ssrc != 0 && now.ssrc != 0)) return;
    const int ahead = serialDistance(before->number, now.number);
    const double ticks = static_cast<std::int32_t>(now.timestamp - before->timestamp);
    if (ahead == 1 && ticks >= 0) ticksApart_ += (ticks - ticksApart_) / 64;
    if (ahead <= 1) return;
    const double expected = ticksApart_ * ahead;
    if (ahead <= sameRun || (ticks > expected / 2 && ticks < expected * 2))
        lostForGood_ += static_cast<std::uint64_t>(ahead - 1);
}

void ReceptionMeter::deliver(ConstRtpPacketView media, SteadyTime now) {
    noteDelivered({media.sequenceNumber(), media.timestamp(), media.ssrc()});
    const std::int64_t arrived = arrivals_[media.sequenceNumber()].exchange(0);
    if (arrived == 0) return;
    const std::int64_t underWay = nanosecondsOf(now) - arrived;
    std::int64_t longest = latency_;
    while (underWay > longest && !latency_.compare_exchange_weak(longest, underWay)) {
    }
}

}  // namespace mvrtpfec
