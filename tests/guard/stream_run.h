#pragma once

#include <gtest/gtest.h>

#include "tests/guard/channel.h"
#include "tests/guard/ideal_decoder.h"
#include "tests/guard/receiver_chain.h"

namespace mvrtpfec::testing {

/// What came out of a chain, held against what was sent.
struct Delivery {
    std::int64_t mismatched = 0;      ///< never sent like that
    std::int64_t disordered = 0;      ///< not behind the one delivered before it
    std::int64_t longestSilence = 0;  ///< most media packets pushed between two delivered
    std::vector<bool> delivered;

    std::int64_t residual(std::int64_t first, std::int64_t end) const {
        std::int64_t missing = 0;
        for (auto id = static_cast<std::size_t>(first); id < static_cast<std::size_t>(end); ++id)
            missing += id >= delivered.size() || !delivered[id];
        return missing;
    }
};

/// A stream from senders through the network into a chain. Packets reach the chain while they are
/// sent; finish() pushes the last window out with padding that is not counted.
class StreamRun {
public:
    StreamRun(ReceiverChain::Mode mode, const Matrix& matrix, const Source& source,
              const Impairment& impairment = {})
        : matrix_(matrix),
          chain_(mode, [this](const Bytes& packet) { take(packet); }),
          channel_(impairment, [this](const WirePacket& packet) { arrive(packet); }) {
        restart(source);
    }

    void send(int packets) {
        sender_->send(packets);
        counted_ = log_.count();
    }
    /// A source that starts anew, its FEC with it.
    void restart(const Source& source) {
        channel_.finish();
        sender_ = std::make_unique<Sender>(matrix_, source, log_,
                                           [this](const WirePacket& packet) { channel_.push(packet); });
    }
    void restart(const Source& source, const Matrix& matrix) {
        matrix_ = matrix;
        restart(source);
    }
    /// Straight into the chain, past the network.
    void inject(ReceiverInput port, const Bytes& bytes) { chain_.push(port, bytes); }
    /// From now on the network gives each packet to `tap` too.
    void setTap(Wire tap) { tap_ = std::move(tap); }
    void finish() {
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
    /// Measures the longest silence from here on.
    void resetSilence() { delivery_.longestSilence = silence_ = 0; }

    /// Nothing came that wasn't sent, nor out of order.
    void expectFaithful() const {
        EXPECT_EQ(delivery_.mismatched, 0);
        EXPECT_EQ(delivery_.disordered, 0);
    }

    std::uint16_t nextNumber() const { return sender_->nextNumber(); }
    std::int64_t residual() const { return delivery_.residual(0, counted_); }
    std::int64_t idealResidual() { return ideal_.missingOf(counted_); }
    const Delivery& delivery() const { return delivery_; }
    ReceiverChain& chain() { return chain_; }

private:
    void arrive(const WirePacket& packet) {
        if (packet.port == ReceiverInput::media) {
            ++silence_;
            delivery_.longestSilence = std::max(delivery_.longestSilence, silence_);
        }
        ideal_.take(packet);
        if (tap_) tap_(packet);
        chain_.push(packet.port, packet.bytes);
    }
    void take(const Bytes& packet) {
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

    Matrix matrix_;
    SentLog log_;
    Delivery delivery_;
    IdealDecoder ideal_;
    Wire tap_;
    ReceiverChain chain_;
    Channel channel_;
    std::unique_ptr<Sender> sender_;
    std::int64_t counted_ = 0;
    std::int64_t lastId_ = -1;
    std::int64_t silence_ = 0;
};

}  // namespace mvrtpfec::testing
