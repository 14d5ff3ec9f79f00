#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "mvrtpfec/log_perf.h"
#include "support/log/log_sink.h"
#include "support/log/message_queue.h"
#include "support/thread.h"

namespace mvn::log {

/// Hands messages to its sinks on a thread of its own, so that who logs never waits for a disk or a network.
/// A message is one line of at most 1039 characters: line feeds become spaces, carriage returns vanish.
class QueuedLogger final : public ILogger {
public:
    /// Throws std::system_error when the system gives no semaphore or thread.
    explicit QueuedLogger(std::vector<std::unique_ptr<LogSink>> sinks, LogClock clock = logTimeNow);
    /// Writes what is queued.
    ~QueuedLogger() override;

    QueuedLogger(const QueuedLogger&) = delete;
    QueuedLogger& operator=(const QueuedLogger&) = delete;

    [[gnu::format(printf, 3, 4)]] void Log(std::uint32_t level, const char* format, ...) override;

private:
    void consume() noexcept;

    const std::vector<std::unique_ptr<LogSink>> sinks_;
    const LogClock clock_;
    std::mutex formatting_;
    MessageQueue queue_;
    Thread thread_;
};

}  // namespace mvn::log
