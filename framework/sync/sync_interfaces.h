#pragma once

#include <cstdint>

namespace mvrtpfec {

/// Takes in how a wrapping media clock relates to reference time (100 ns).
struct ISyncSink {
    virtual ~ISyncSink() = default;
    virtual void SetReference(std::uint64_t clock, std::int64_t referenceTime) = 0;
    virtual void ResetReference() = 0;
};

/// Knows how a wrapping media clock relates to reference time (100 ns).
struct ISyncSource {
    virtual ~ISyncSource() = default;
    /// Whether there is a reference.
    virtual bool IsSynchronized() = 0;
    /// By the shorter way round the clock, forwards where both are as long. Without a reference it is
    /// relative to clock 0 and time 0.
    virtual std::int64_t ClockToReferenceTime(std::uint64_t clock) = 0;
};

}  // namespace mvrtpfec
