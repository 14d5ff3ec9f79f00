#pragma once

#include "framework/base/atl_sync.h"
#include "framework/sync/sync_interfaces.h"

namespace mvrtpfec {

/// Converts a clock of `rate` ticks a second that goes from modulus - 1 to 0. Any thread.
///
/// Exact while modulus and modulus / rate in 100 ns fit 63 bits and rate is below 10^12.
class CSynchronizer final : public ISyncSource, public ISyncSink {
public:
    /// Neither may be 0. Throws CAtlException when the system gives no lock.
    CSynchronizer(std::uint64_t rate, std::uint64_t modulus);

    bool IsSynchronized() override;
    std::int64_t ClockToReferenceTime(std::uint64_t clock) override;
    void SetReference(std::uint64_t clock, std::int64_t referenceTime) override;
    void ResetReference() override;

private:
    std::uint64_t toReferenceTime(std::uint64_t ticks) const noexcept;
    std::uint64_t forwardDistance(std::uint64_t from, std::uint64_t to) const noexcept;

    CCriticalSection lock_{0};
    bool valid_ = false;
    std::int64_t referenceTime_ = 0;
    std::uint64_t referenceClock_ = 0;
    const std::uint64_t rate_;
    const std::uint64_t modulus_;
    const std::uint64_t modulusTime_;  ///< 100 ns
};

}  // namespace mvrtpfec
