#include "host/plan/loss_trace.h"

#include <algorithm>
#include <chrono>

#include "core/same_run.h"
#include "core/serial_distance.h"

namespace mvrtpfec {

namespace {

/// Follows the numbers of one source; what comes late was not lost.
class TraceWriter {
public:
    void add(ConstRtpPacketView media) {
        const std::uint16_t number = media.sequenceNumber();
        const int ahead = serialDistance(newest_, number);
        const bool begins = lost_.empty() || media.ssrc() != ssrc_ || ahead > sameRun || ahead < -sameRun;
        if (begins || ahead > 0) {
            if (!begins) lost_.insert(lost_.end(), static_cast<std::size_t>(ahead - 1), true);
            if (begins) runStart_ = lost_.size();
            lost_.push_back(false);
            newest_ = number;
            ssrc_ = media.ssrc();
        } else if (static_cast<std::size_t>(-ahead) < lost_.size() - runStart_) {
            lost_[lost_.size() - 1 - static_cast<std::size_t>(-ahead)] = false;
        }
    }
    std::vector<bool> take() { return std::move(lost_); }

private:
    std::vector<bool> lost_;
    std::size_t runStart_ = 0;
    std::uint16_t newest_ = 0;
    std::uint32_t ssrc_ = 0;
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
        writer.add(packet);
        // The first packet begins the time that the others fill.
        if (first) bits += 8u * packet.payloadLength();
        if (!first) first = datagram.time;
        last = std::max(last, datagram.time);
    }
    LossTrace trace{writer.take(), std::nullopt};
    const double seconds = first ? std::chrono::duration<double>(last - *first).count() : 0;
    if (seconds > 0)
        trace.bitRate = static_cast<std::uint64_t>(static_cast<double>(bits) / seconds / (1 - trace.loss()));
    return trace;
}

}  // namespace mvrtpfec
