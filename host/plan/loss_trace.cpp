#include "host/plan/loss_trace.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "core/same_run.h"
#include "core/serial_distance.h"

namespace mvrtpfec {

namespace {

/// So many packets are remembered at most: 15 days at 8 Mbit/s.
constexpr double mostRemembered = 1e9;

bool isAbout(double value, double expected) {
    return value > expected / 2 && value < expected * 2;
}

/// Follows the numbers of one source; what comes late was not lost.
class TraceWriter {
public:
    void add(ConstRtpPacketView media, std::chrono::nanoseconds time) {
        const int ahead = serialDistance(newest_, media.sequenceNumber());
        if (trace_.lost.empty() || media.ssrc() != ssrc_)
            begin(media);
        else if (ahead > sameRun || ahead < -sameRun)
            leap(media, time);
        else if (ahead <= 0)
            return fill(static_cast<std::size_t>(-ahead));
        else
            follow(media, static_cast<std::size_t>(ahead));
        newest_ = media.sequenceNumber();
        timestamp_ = media.timestamp();
        time_ = time;
    }
    LossTrace take() { return std::move(trace_); }

private:
    void begin(ConstRtpPacketView media) {
        runStart_ = trace_.lost.size();
        ssrc_ = media.ssrc();
        trace_.lost.push_back(false);
    }
    void follow(ConstRtpPacketView media, std::size_t ahead) {
        const double ticks = static_cast<std::int32_t>(media.timestamp() - timestamp_);
        if (ahead == 1 && ticks >= 0) {
            ticks_ += ticks;
            ++steps_;
        }
        trace_.lost.insert(trace_.lost.end(), ahead - 1, true);
        trace_.lost.push_back(false);
    }
    void fill(std::size_t behind) {
        if (behind < trace_.lost.size() - runStart_) trace_.lost[trace_.lost.size() - 1 - behind] = false;
    }
    void leap(ConstRtpPacketView media, std::chrono::nanoseconds time) {
        const double ahead = packetsSince(media, time);
        const bool isOutage = ahead > 0 && static_cast<double>(trace_.lost.size()) + ahead < mostRemembered;
        if (!isOutage) return begin(media);
        ++trace_.outages;
        follow(media, static_cast<std::size_t>(ahead));
    }
    /// Numbers that the source went on by, cycles of them included; 0 when it didn't.
    double packetsSince(ConstRtpPacketView media, std::chrono::nanoseconds time) const {
        constexpr double cycle = 65536;
        constexpr double ticksPerSecond = 90000;
        const double ticks = static_cast<std::int32_t>(media.timestamp() - timestamp_);
        const double passed = std::chrono::duration<double>(time - time_).count() * ticksPerSecond;
        if (ticks <= 0 || ticks_ <= 0 || !isAbout(ticks, passed)) return 0;
        const double expected = ticks * steps_ / ticks_;
        const double ahead = static_cast<std::uint16_t>(media.sequenceNumber() - newest_);
        const double all = ahead + cycle * std::max(0.0, std::round((expected - ahead) / cycle));
        return isAbout(all, expected) ? all : 0;
    }

    LossTrace trace_;
    std::size_t runStart_ = 0;
    std::uint16_t newest_ = 0;
    std::uint32_t timestamp_ = 0;
    std::chrono::nanoseconds time_{0};
    std::uint32_t ssrc_ = 0;
    double ticks_ = 0;  ///< of packets one behind the other
    double steps_ = 0;
};

}  // namespace

std::size_t LossTrace::losses() const {
    return static_cast<std::size_t>(std::ranges::count(lost, true));
}

double LossTrace::loss() const {
    return lost.empty() ? 0 : static_cast<double>(losses()) / static_cast<double>(lost.size());
}

double LossTrace::meanBurst() const {
    std::size_t bursts = 0;
    for (std::size_t i = 0; i < lost.size(); ++i) bursts += lost[i] && (i == 0 || !lost[i - 1]);
    return bursts == 0 ? 0 : static_cast<double>(losses()) / static_cast<double>(bursts);
}

std::size_t LossTrace::longestBurst() const {
    std::size_t longest = 0;
    std::size_t now = 0;
    for (const bool isLost : lost) {
        now = isLost ? now + 1 : 0;
        longest = std::max(longest, now);
    }
    return longest;
}

LossTrace readLossTrace(PacketSource& source) {
    TraceWriter writer;
    Datagram datagram;
    std::uint64_t bits = 0;
    std::optional<std::chrono::nanoseconds> first;
    std::chrono::nanoseconds last{0};
    while (source.read(datagram)) {
        const ConstRtpPacketView packet = viewOf(datagram.payload);
        if (packet.length != datagram.payload.size() || !packet.isValid() ||
            packet.payloadType() != mediaPayloadType)
            continue;
        writer.add(packet, datagram.time);
        // The first packet begins the time that the others fill.
        if (first) bits += 8u * packet.payloadLength();
        if (!first) first = datagram.time;
        last = std::max(last, datagram.time);
    }
    LossTrace trace = writer.take();
    const double seconds = first ? std::chrono::duration<double>(last - *first).count() : 0;
    if (seconds > 0)
        trace.bitRate = static_cast<std::uint64_t>(static_cast<double>(bits) / seconds / (1 - trace.loss()));
    return trace;
}

}  // namespace mvrtpfec
