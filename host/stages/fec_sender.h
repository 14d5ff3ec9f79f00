#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "core/fec_composer.h"
#include "host/io/datagram.h"

namespace mvrtpfec {

struct MatrixConfig {
    FecMode mode = fecBoth;
    std::int32_t columns = 10;
    std::int32_t rows = 10;
};

/// What the sender filter does with a stream: composer A alone in row or column mode, its FEC packets
/// on FECA; in both, composer A makes the column FEC on FECA, then composer B the row FEC on FECB.
class FecSender {
public:
    using Output = std::function<void(StreamPort, ConstRtpPacketView)>;

    /// Throws what CFecComposer::checkMatrix throws.
    FecSender(const MatrixConfig& config, Output output);

    /// Feeds one media packet; FEC packets it completes are given to the output before this returns.
    void push(ConstRtpPacketView media);

private:
    FecPacketSink sinkOf(StreamPort port) const;

    Output output_;
    std::unique_ptr<CFecComposer> composerA_;
    std::unique_ptr<CFecComposer> composerB_;
};

}  // namespace mvrtpfec
