#pragma once

#include <cstddef>
#include <cstdint>

namespace mvn::log {

/// Bytes of the buffer that every formatting step uses: a longer message is cut to its first 259 characters.
inline constexpr std::size_t messageSize = 260;

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

}  // namespace mvn::log
