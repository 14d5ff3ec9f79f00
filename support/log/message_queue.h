#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>

#include "platform/threads/sync.h"
#include "support/log/log_record.h"

namespace mvn::log {

/// Records on their way to the one thread that writes them, at most 1000. The record that finds it full
/// leaves a message about that in its place; what follows is dropped until the reader has taken everything.
class MessageQueue {
public:
    static constexpr std::size_t capacity = 1000;

    /// Throws std::system_error when the system gives no semaphore.
    MessageQueue();
    ~MessageQueue();

    MessageQueue(const MessageQueue&) = delete;
    MessageQueue& operator=(const MessageQueue&) = delete;

    /// Any thread; never waits for the reader.
    void append(LogRecord record);
    /// No further record comes.
    void close();

    /// The next record, waited for; nothing once the queue is closed and empty.
    std::optional<LogRecord> take();

private:
    bool accept(LogRecord&& record);

    std::mutex mutex_;
    std::deque<LogRecord> records_;
    bool overflowed_ = false;
    HANDLE appended_;  ///< a count of the records, one more when closed
};

}  // namespace mvn::log
