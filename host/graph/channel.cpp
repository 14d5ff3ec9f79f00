#include "host/graph/channel.h"

#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

namespace mvrtpfec {

namespace {

void checkShare(double value, const char* name) {
    if (!(value >= 0 && value <= 1))
        throw std::invalid_argument(std::string(name) + " must be between 0 and 1, or 0% and 100%");
}

void checkReachable(double loss, double burst) {
    if (loss > burst / (burst + 1) && burst > 1)
        throw std::invalid_argument(
            "bursts of this mean length can't lose that much: lower the loss or lengthen them");
}

}  // namespace

void checkChannel(const ChannelConfig& config) {
    checkShare(config.loss, "the loss");
    checkShare(config.fecLoss, "the FEC loss");
    checkShare(config.duplicate, "the share of duplicates");
    if (!(config.burst >= 1)) throw std::invalid_argument("the mean burst length must be at least 1");
    checkReachable(config.loss, config.burst);
    checkReachable(config.fecLoss, config.burst);
}

LossChances lossChances(double loss, double burst) {
    if (burst <= 1) return {loss, 1 - loss};
    const double leave = 1 / burst;
    return {loss >= 1 ? 1 : leave * loss / (1 - loss), leave};
}

Channel::Channel(const ChannelConfig& config, Output output)
    : config_(config), output_(std::move(output)), random_(config.seed) {
    checkChannel(config);
    const LossState fec{lossChances(config.fecLoss, config.burst)};
    losses_ = {LossState{lossChances(config.loss, config.burst)}, fec, fec};
}

bool Channel::isLost(LossState& state) {
    const double chance = state.losing ? 1 - state.chances.leave : state.chances.enter;
    state.losing = draw() < chance;
    return state.losing;
}

/// 0 up to 1 in steps of 2^-53. The standard distributions differ between libraries.
double Channel::draw() {
    return static_cast<double>(random_() >> 11) * 0x1.0p-53;
}

void Channel::push(StreamPort port, std::vector<std::uint8_t> packet) {
    if (isLost(losses_[static_cast<std::size_t>(port)])) {
        ++(port == StreamPort::media ? droppedMedia_ : droppedFec_);
        return;
    }
    if (config_.duplicate > 0 && draw() < config_.duplicate) send(port, packet);
    send(port, std::move(packet));
}

void Channel::send(StreamPort port, std::vector<std::uint8_t> packet) {
    if (config_.reorder == 0) return output_(port, packet);
    const auto delay = static_cast<std::uint64_t>(draw() * static_cast<double>(config_.reorder + 1));
    travelling_.push({sent_ + delay, sent_, port, std::move(packet)});
    letOutUpTo(sent_++);
}

void Channel::letOutUpTo(std::uint64_t place) {
    while (!travelling_.empty() && travelling_.top().due <= place) {
        output_(travelling_.top().port, travelling_.top().packet);
        travelling_.pop();
    }
}

void Channel::finish() {
    letOutUpTo(std::numeric_limits<std::uint64_t>::max());
}

}  // namespace mvrtpfec
