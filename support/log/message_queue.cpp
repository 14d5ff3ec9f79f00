#include "support/log/message_queue.h"

#include <limits>
#include <system_error>
#include <utility>

#include "platform/threads/last_error.h"

namespace mvn::log {

MessageQueue::MessageQueue()
    : appended_(CreateSemaphoreW(nullptr, 0, std::numeric_limits<LONG>::max(), nullptr)) {
    if (appended_ == nullptr) throw std::system_error(platform::lastError(), "semaphore");
}

MessageQueue::~MessageQueue() {
    CloseHandle(appended_);
}

void MessageQueue::append(LogRecord record) {
    if (accept(std::move(record))) ReleaseSemaphore(appended_, 1, nullptr);
}

bool MessageQueue::accept(LogRecord&& record) {
    const std::lock_guard lock(mutex_);
    if (overflowed_) return false;
    if (records_.size() < capacity) {
        records_.push_back(std::move(record));
        return true;
    }
    records_.push_back({0, "Overflowed message queue.", record.time});
    overflowed_ = true;
    return true;
}

void MessageQueue::close() {
    ReleaseSemaphore(appended_, 1, nullptr);
}

std::optional<LogRecord> MessageQueue::take() {
    WaitForSingleObject(appended_, INFINITE);
    const std::lock_guard lock(mutex_);
    if (records_.empty()) return std::nullopt;
    std::optional<LogRecord> record(std::move(records_.front()));
    records_.pop_front();
    if (records_.empty()) overflowed_ = false;
    return record;
}

}  // namespace mvn::log
