#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "host/io/ts_reader.h"

namespace mvrtpfec {

/// A transport stream file again and again: the first packet of a round follows the last one of the round
/// before as that followed the one before it.
class LoopedTsReader final : public TimedTsPackets {
public:
    using Opener = std::function<std::unique_ptr<TsReader>()>;

    /// Throws what `open` throws, as next() does for a later round.
    explicit LoopedTsReader(Opener open);

    std::optional<TimedTsPacket> next() override;
    void throwIfBroken() const override { reader_->throwIfBroken(); }
    double progress() const override { return 0; }

private:
    Opener open_;
    std::unique_ptr<TsReader> reader_;
    std::chrono::nanoseconds roundStart_{0};
    std::chrono::nanoseconds latest_{0};
    std::chrono::nanoseconds step_{0};
};

}  // namespace mvrtpfec
