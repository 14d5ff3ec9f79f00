#pragma once

#include <algorithm>
#include <memory>
#include <vector>

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

    std::int64_t residual(std::int64_t first, std::int64_t end) const;
};

/// A stream from senders through the network into a chain. Packets reach the chain while they are
/// sent; finish() pushes the last window out with padding that is not counted.
class StreamRun {
public:
    StreamRun(ReceiverChain::Mode mode, const Matrix& matrix, const Source& source,
              const Impairment& impairment = {});

    void send(int packets);
    /// A source that starts anew, its FEC with it.
    void restart(const Source& source);
    void restart(const Source& source, const Matrix& matrix);
    /// Straight into the chain, past the network.
    void inject(ReceiverInput port, Bytes bytes) { chain_.push(port, bytes); }
    /// From now on the network gives each packet to `tap` too.
    void setTap(Wire tap) { tap_ = std::move(tap); }
    void finish();
    /// Measures the longest silence from here on.
    void resetSilence() { delivery_.longestSilence = silence_ = 0; }

    std::int64_t sent() const { return log_.count(); }
    std::uint16_t nextNumber() const { return sender_->nextNumber(); }
    std::int64_t residual() const { return delivery_.residual(0, counted_); }
    std::int64_t idealResidual() { return ideal_.missingOf(counted_); }
    const Delivery& delivery() const { return delivery_; }
    ReceiverChain& chain() { return chain_; }

private:
    void arrive(const WirePacket& packet);
    void take(Bytes packet);

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
