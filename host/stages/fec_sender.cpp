#include "host/stages/fec_sender.h"

#include <utility>

#include "platform/runtime_rand.h"

namespace mvrtpfec {

namespace {

/// The sender filter draws as many numbers, which nothing reads, before its composers draw theirs: a
/// stream protected here and one protected in a graph then carry the same FEC sequence numbers.
constexpr int drawsOfTheFilter = 4;

}  // namespace

FecSender::FecSender(const MatrixConfig& config, Output output) : output_(std::move(output)) {
    CFecComposer::checkMatrix(config.mode, config.columns, config.rows);
    for (int i = 0; i < drawsOfTheFilter; ++i) platform::runtimeRand();

    const bool both = config.mode == fecBoth;
    composerA_ = std::make_unique<CFecComposer>(sinkOf(StreamPort::fecA), both ? fecColumn : config.mode,
                                                config.columns, config.rows);
    if (both)
        composerB_ =
            std::make_unique<CFecComposer>(sinkOf(StreamPort::fecB), fecRow, config.columns, config.rows);
}

FecPacketSink FecSender::sinkOf(StreamPort port) const {
    return [this, port](const std::shared_ptr<RtpPacket>& packet) { output_(port, packet->view); };
}

void FecSender::push(ConstRtpPacketView media) {
    composerA_->protect(media);
    if (composerB_) composerB_->protect(media);
}

}  // namespace mvrtpfec
