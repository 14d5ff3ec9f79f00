#pragma once

#include <cstdint>

// Where the filters' log texts and statistics go. A host may implement ILogPerf and hand it to the receiver
// filter (rtp_fec_in.h).

namespace mvn::log {

namespace i_logger::v0 {

/// Where messages go. Levels count from 0, the most severe.
struct ILogger {
    /// A printf-style message. Any thread.
    [[gnu::format(printf, 3, 4)]] virtual void Log(std::uint32_t level, const char* format, ...) = 0;
    virtual ~ILogger() = default;
};

}  // namespace i_logger::v0

namespace i_buffer_full_notifier::v0 {

/// Hears of pools of output buffers, by name.
struct IBufferFullNotifier {
    virtual void RegisterBuffer(const char* name) = 0;
    /// A request that would not wait found no buffer.
    virtual void NotifyBufferFull(const char* name) = 0;
    virtual ~IBufferFullNotifier() = default;
};

}  // namespace i_buffer_full_notifier::v0

using i_buffer_full_notifier::v0::IBufferFullNotifier;
using i_logger::v0::ILogger;

/// A logger that also counts what happens to the media. Any thread.
struct ILogPerf : ILogger, IBufferFullNotifier {
    virtual void CountResync() = 0;
    virtual void CountTsDiscontinuity() = 0;
    virtual void CountDecodedPicture() = 0;
    virtual void AddPoliticChoices(std::int32_t amount) = 0;
    /// Writes one line of statistics.
    virtual void Sample() = 0;
};

}  // namespace mvn::log
