#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

#include "host/io/ts_reader.h"
#include "host/live/ts_continuation.h"

namespace mvrtpfec {

/// A transport stream file again and again, as one stream that runs on. A round begins when the streams of
/// the round before have played what they brought, by their own times; until then null packets follow its
/// last one.
class LoopedTsReader final : public TimedTsPackets {
public:
    using Opener = std::function<std::unique_ptr<TsReader>()>;

    /// Throws what `open` throws, as next() does for a later round.
    explicit LoopedTsReader(Opener open);

    std::optional<TimedTsPacket> next() override;
    void throwIfBroken() const override { reader_->throwIfBroken(); }
    double progress() const override { return 0; }
    SkippedBytes* skipped() override { return reader_->skipped(); }

private:
    void beginRound(std::uint64_t ticks);
    TimedTsPacket fill();

    Opener open_;
    std::unique_ptr<TsReader> reader_;
    TsContinuation continuation_;
    std::uint64_t roundTicks_ = 0;  ///< 90 kHz, of the round's start
    std::chrono::nanoseconds latest_{0};
    std::chrono::nanoseconds step_{0};
};

}  // namespace mvrtpfec
