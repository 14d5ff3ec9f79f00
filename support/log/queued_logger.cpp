#include "support/log/queued_logger.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <string>
#include <system_error>
#include <utility>

#include "platform/threads/last_error.h"

namespace mvn::log {

namespace {

constexpr std::size_t longMessageSize = 1040;

[[gnu::format(printf, 1, 0)]] std::string oneLine(const char* format, va_list arguments) {
    std::array<char, longMessageSize> buffer;
    if (std::vsnprintf(buffer.data(), buffer.size(), format, arguments) < 0) return {};
    std::string text = buffer.data();
    std::erase(text, '\r');
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

}  // namespace

QueuedLogger::QueuedLogger(std::vector<std::unique_ptr<LogSink>> sinks, LogClock clock)
    : sinks_(std::move(sinks)), clock_(std::move(clock)), thread_([this] { consume(); }) {
    if (thread_.Handle() == nullptr) throw std::system_error(platform::lastError(), "log thread");
    thread_.Start();
}

QueuedLogger::~QueuedLogger() {
    for (const auto& sink : sinks_) sink->giveUpWaiting();
    queue_.close();
    WaitForSingleObject(thread_.Handle(), INFINITE);
}

void QueuedLogger::Log(std::uint32_t level, const char* format, ...) {
    // Held over the appending too: records stand in the order of their times.
    const std::lock_guard lock(formatting_);
    const LogTime time = clock_();
    va_list arguments;
    va_start(arguments, format);
    std::string text = oneLine(format, arguments);
    va_end(arguments);
    queue_.append({level, std::move(text), time});
}

void QueuedLogger::consume() noexcept {
    while (const auto record = queue_.take()) {
        for (const auto& sink : sinks_) {
            try {
                sink->log(*record);
            } catch (const std::exception&) {
                continue;  // there is nobody left to tell
            }
        }
    }
}

}  // namespace mvn::log
