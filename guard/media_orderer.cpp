#include "guard/media_orderer.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "core/serial_distance.h"

namespace mvrtpfec {

namespace {

/// A packet this far behind is late or repeated, further off it belongs to another run. A source that
/// plays the very same packets again is heard again after as many of them.
constexpr int lateZone = 1024;
/// In windows: so far ahead a single packet is believed.
constexpr int believedWindows = 4;

}  // namespace

MediaOrderer::MediaOrderer(std::size_t window, std::size_t startHold, Output output)
    : window_(window),
      startHold_(startHold),
      output_(std::move(output)),
      slots_(window),
      timestamps_(lateZone) {}

std::optional<std::uint16_t> MediaOrderer::position() const {
    if (!collecting_) return static_cast<std::uint16_t>(next_ - 1);
    if (collected_.empty()) return std::nullopt;
    return collected_.front()->view.sequenceNumber();
}

void MediaOrderer::push(std::unique_ptr<RtpPacket> packet) {
    if (!collecting_) return place(std::move(packet));
    collected_.push_back(std::move(packet));
    if (collected_.size() >= startHold_) begin();
}

void MediaOrderer::passTime(std::chrono::steady_clock::time_point now, std::chrono::nanoseconds patience) {
    if (collecting_ || held_ == 0) {
        waiting_.reset();
    } else if (!waiting_ || waiting_->number != next_) {
        waiting_ = {next_, now};
    } else if (now - waiting_->since >= patience) {
        while (!slots_[head_]) step();
        handOnDue();
    }
}

void MediaOrderer::begin() {
    if (!collecting_ || collected_.empty()) return;
    collecting_ = false;
    reach_ = static_cast<int>(window_);
    auto packets = std::exchange(collected_, {});
    const std::size_t strays = findRun(packets);
    figures_.stray += strays;
    packets.erase(packets.begin(), packets.begin() + static_cast<std::ptrdiff_t>(strays));
    setStart(packets);
    for (auto& packet : packets) {
        // One of them may have begun a run of its own, for which the rest is collected.
        if (collecting_)
            collected_.push_back(std::move(packet));
        else
            place(std::move(packet));
    }
}

void MediaOrderer::setStart(const std::vector<std::unique_ptr<RtpPacket>>& packets) {
    const ConstRtpPacketView first = packets.front()->view;
    ssrc_ = first.ssrc();
    next_ = first.sequenceNumber();
    for (const auto& packet : packets) {
        const std::uint16_t number = packet->view.sequenceNumber();
        const bool near = packet->view.ssrc() == ssrc_ &&
                          serialDistance(number, first.sequenceNumber()) < static_cast<int>(window_);
        if (near && serialDistance(next_, number) < 0) next_ = number;
    }
}

/// Some of the first packets may be strays: where the run that has most of them begins.
std::size_t MediaOrderer::findRun(const std::vector<std::unique_ptr<RtpPacket>>& packets) const {
    struct Run {
        std::size_t first;
        std::size_t last;
        std::size_t count;
    };
    std::vector<Run> runs;
    for (std::size_t i = 0; i < packets.size(); ++i) {
        const auto run = std::find_if(runs.begin(), runs.end(),
                                      [&](const Run& r) { return isNear(*packets[r.last], *packets[i]); });
        if (run == runs.end())
            runs.push_back({i, i, 1});
        else
            *run = {run->first, i, run->count + 1};
    }
    const auto fewer = [](const Run& a, const Run& b) { return a.count < b.count; };
    return std::max_element(runs.begin(), runs.end(), fewer)->first;
}

bool MediaOrderer::isNear(const RtpPacket& one, const RtpPacket& other) const {
    const int ahead = serialDistance(one.view.sequenceNumber(), other.view.sequenceNumber());
    return one.view.ssrc() == other.view.ssrc() &&
           std::abs(ahead) < believedWindows * static_cast<int>(window_);
}

int MediaOrderer::distance(const RtpPacket& packet) const {
    return serialDistance(next_, packet.view.sequenceNumber());
}

void MediaOrderer::place(std::unique_ptr<RtpPacket> packet) {
    if (packet->view.ssrc() != ssrc_ || contradicts(*packet)) return consider(std::move(packet));
    const int ahead = distance(*packet);
    if (ahead < 0 && -ahead <= reach_ && leftOutInARow_ < lateZone)
        return leaveOut(packet->view.sequenceNumber());
    if (ahead < 0 || ahead >= believedWindows * static_cast<int>(window_)) return consider(std::move(packet));
    jumpTo(std::move(packet));
    handOnDue();
}

std::optional<std::uint32_t> MediaOrderer::timestampOf(std::uint16_t number) const {
    const int ahead = serialDistance(next_, number);
    if (ahead < 0) {
        if (-ahead > reach_ || !handedOn_.contains(number)) return std::nullopt;
        return timestamps_[number % lateZone];
    }
    if (ahead >= static_cast<int>(window_)) return std::nullopt;
    const auto& held = slots_[(head_ + static_cast<std::size_t>(ahead)) % window_];
    return held ? std::optional(held->view.timestamp()) : std::nullopt;
}

bool MediaOrderer::contradicts(const RtpPacket& packet) const {
    return timestampOf(packet.view.sequenceNumber()).value_or(packet.view.timestamp()) !=
           packet.view.timestamp();
}

bool MediaOrderer::agrees(std::uint16_t number, std::uint32_t timestamp) const {
    if (collecting_) return true;
    if (const auto seen = timestampOf(number)) return *seen == timestamp;
    const auto newest = timestampOf(static_cast<std::uint16_t>(next_ - 1));
    const bool isAhead = serialDistance(next_, number) >= 0;
    return !isAhead || !newest || static_cast<std::int32_t>(timestamp - *newest) >= 0;
}

void MediaOrderer::leaveOut(std::uint16_t sequenceNumber) {
    ++leftOutInARow_;
    ++(handedOn_.contains(sequenceNumber) ? figures_.repeated : figures_.late);
}

void MediaOrderer::consider(std::unique_ptr<RtpPacket> packet) {
    if (!stray_ || !followsStray(*packet)) {
        if (stray_) ++figures_.stray;
        stray_ = std::move(packet);
        return;
    }
    if (!strayIsAhead()) return restartWith(std::move(packet));
    jumpTo(std::exchange(stray_, nullptr));
    place(std::move(packet));
}

bool MediaOrderer::followsStray(const RtpPacket& packet) const {
    const int ahead = serialDistance(stray_->view.sequenceNumber(), packet.view.sequenceNumber());
    return packet.view.ssrc() == stray_->view.ssrc() && ahead > 0 && ahead < static_cast<int>(window_);
}

bool MediaOrderer::strayIsAhead() const {
    const int ahead = distance(*stray_);
    return stray_->view.ssrc() == ssrc_ && ahead >= 0 && ahead < lateZone && !contradicts(*stray_);
}

/// Takes a packet into the window, which moves up to it when it has to.
void MediaOrderer::jumpTo(std::unique_ptr<RtpPacket> packet) {
    if (stray_) ++figures_.stray;
    stray_.reset();
    leftOutInARow_ = 0;
    const std::uint16_t number = packet->view.sequenceNumber();
    if (distance(*packet) >= static_cast<int>(window_))
        giveUpTo(static_cast<std::uint16_t>(number - window_ + 1));
    auto& slot = slots_[(head_ + static_cast<std::size_t>(distance(*packet))) % window_];
    if (slot) {
        ++figures_.repeated;
        return;
    }
    slot = std::move(packet);
    ++held_;
}

void MediaOrderer::restartWith(std::unique_ptr<RtpPacket> packet) {
    handOnHeld();
    ++figures_.restarts;
    output_.restart();
    handedOn_ = {};
    leftOutInARow_ = 0;
    afterHole_ = false;
    hole_ = 0;
    collecting_ = true;
    collected_.push_back(std::exchange(stray_, nullptr));
    push(std::move(packet));
}

void MediaOrderer::flush() {
    while (collecting_ && !collected_.empty()) begin();
    if (stray_ && strayIsAhead()) jumpTo(std::exchange(stray_, nullptr));
    handOnHeld();
}

void MediaOrderer::handOnHeld() {
    while (held_ > 0) {
        handOnDue();
        if (held_ > 0) giveUpTo(static_cast<std::uint16_t>(next_ + 1));
    }
}

void MediaOrderer::handOnDue() {
    while (slots_[head_]) step();
}

void MediaOrderer::giveUpTo(std::uint16_t target) {
    while (next_ != target) step();
}

/// Hands on the packet waited for, or gives it up, and waits for the one behind it.
void MediaOrderer::step() {
    auto packet = std::exchange(slots_[head_], nullptr);
    const std::uint16_t number = next_++;
    head_ = (head_ + 1) % window_;
    reach_ = std::min(reach_ + 1, lateZone);
    if (!packet) {
        handedOn_.erase(number);
        afterHole_ = true;
        figures_.longestHole = std::max(figures_.longestHole, ++hole_);
        return;
    }
    hole_ = 0;
    --held_;
    handedOn_.insert(number);
    timestamps_[number % lateZone] = packet->view.timestamp();
    if (afterHole_) ++figures_.holes;
    output_.packet(std::move(packet), std::exchange(afterHole_, false));
}

}  // namespace mvrtpfec
