#pragma once

#include <atomic>

#include "mvrtpfec/log_perf.h"
#include "support/log/log_message.h"

namespace mvn::log {

/// Hands every call on to its target: a T of its own until another is set. No lock; a target that is set
/// must outlive every call that may still reach it.
template <class T>
class SmartLogPerf : public ILogPerf {
public:
    SmartLogPerf() : target_(&inner_) {}

    SmartLogPerf(const SmartLogPerf&) = delete;
    SmartLogPerf& operator=(const SmartLogPerf&) = delete;

    /// Null for the built-in one.
    void SetTarget(ILogPerf* target) noexcept {
        target_.store(target != nullptr ? target : &inner_, std::memory_order_release);
    }

    [[gnu::format(printf, 3, 4)]] void Log(std::uint32_t level, const char* format, ...) override {
        MessageBuffer message;
        va_list arguments;
        va_start(arguments, format);
        formatMessage(message, format, arguments);
        va_end(arguments);
        // The text may hold percent signs, which must not be taken for conversions again.
        target()->Log(level, "%s", message.data());
    }
    void CountResync() override { target()->CountResync(); }
    void CountTsDiscontinuity() override { target()->CountTsDiscontinuity(); }
    void CountDecodedPicture() override { target()->CountDecodedPicture(); }
    void AddPoliticChoices(std::int32_t amount) override { target()->AddPoliticChoices(amount); }
    void Sample() override { target()->Sample(); }
    void RegisterBuffer(const char* name) override { target()->RegisterBuffer(name); }
    void NotifyBufferFull(const char* name) override { target()->NotifyBufferFull(name); }

private:
    ILogPerf* target() const noexcept { return target_.load(std::memory_order_acquire); }

    T inner_;
    std::atomic<ILogPerf*> target_;
};

}  // namespace mvn::log
