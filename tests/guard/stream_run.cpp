#include "tests/guard/stream_run.h"

namespace mvrtpfec::testing {

std::int64_t Delivery::residual(std::int64_t first, std::int64_t end) const {
    std::int64_t missing = 0;
    for (std::int64_t id = first; id < end; ++id) {
        const auto index = static_cast<std::size_t>(id);
        missing += index >= delivered.size() || !delivered[index];
    }
    return missing;
}

StreamRun::StreamRun(ReceiverChain::Mode mode, const Matrix& matrix, const Source& source,
                     const Impairment& impairment)
    : matrix_(matrix),
      chain_(mode, [this](Bytes packet) { take(packet); }),
      channel_(impairment, [this](const WirePacket& packet) { arrive(packet); }) {
    restart(source);
}

void StreamRun::restart(const Source& source) {
    channel_.finish();
    sender_ = std::make_unique<Sender>(matrix_, source, log_,
                                       [this](const WirePacket& packet) { channel_.push(packet); });
}

void StreamRun::restart(const Source& source, const Matrix& matrix) {
    matrix_ = matrix;
    restart(source);
}

void StreamRun::send(int packets) {
    sender_->send(packets);
    counted_ = log_.count();
}

void StreamRun::arrive(const WirePacket& packet) {
    if (packet.port == ReceiverInput::media) {
        ++silence_;
        delivery_.longestSilence = std::max(delivery_.longestSilence, silence_);
    }
    ideal_.take(packet);
    if (tap_) tap_(packet);
    chain_.push(packet.port, packet.bytes);
}

void StreamRun::take(Bytes packet) {
    silence_ = 0;
    const std::int64_t id = log_.find(packet);
    if (id == SentLog::unknown) {
        ++delivery_.mismatched;
        return;
    }
    const auto index = static_cast<std::size_t>(id);
    if (delivery_.delivered.size() <= index) delivery_.delivered.resize(index + 1);
    delivery_.delivered[index] = true;
    delivery_.disordered += id <= lastId_;
    lastId_ = id;
}

void StreamRun::finish() {
    constexpr int slack = 64;
    channel_.finish();
    // The network is left out: padding is not lost.
    const Wire past = [this](const WirePacket& packet) { chain_.push(packet.port, packet.bytes); };
    Source padding{sender_->nextNumber()};
    padding.ssrc = sender_->ssrc();
    Sender(matrix_, padding, log_, past)
        .sendBare(2 * matrix_.columns * std::max<int>(matrix_.rows, 1) + slack);
    chain_.finish();
}

}  // namespace mvrtpfec::testing
