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
    /// Where calls go, for a message that must not be cut to the buffer here.
    ILogPerf& Target() const noexcept { return *target_.load(std::memory_order_acquire); }

    [[gnu::format(printf, 3, 4)]] void Log(std::uint32_t level, const char* format, ...) override {
        MessageBuffer message;
        va_list arguments;
        va_start(arguments, format);
        formatMessage(message, format, arguments);
        va_end(arguments);
        // The text may hold percent signs, which must not be taken for conversions again.
        Target().Log(level, "%s", message.data());
    }
    void CountResync() override { Target().CountResync(); }
    void CountTsDiscontinuity() override { Target().CountTsDiscontinuity(); }
    void CountDecodedPicture() override { Target().CountDecodedPicture(); }
    void AddPoliticChoices(std::int32_t amount) override { Target().AddPoliticChoices(amount); }
    void Sample() override { Target().Sample(); }
    void RegisterBuffer(const char* name) override { Target().RegisterBuffer(name); }
    void NotifyBufferFull(const char* name) override { Target().NotifyBufferFull(name); }

private:
    T inner_;
    std::atomic<ILogPerf*> target_;
};

}  // namespace mvn::log
