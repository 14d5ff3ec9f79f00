#pragma once

#include <cstdint>
#include <deque>
#include <optional>

#include "framework/base/atl_sync.h"
#include "framework/base/com_ptr.h"
#include "framework/base/critical_section.h"
#include "platform/graph/media_samples.h"

namespace mvrtpfec {

/// Ordered samples on their way from the inputs' threads to the worker; a null entry marks an end of stream.
/// The semaphore holds a unit for each entry: an entry is appended before its unit is released, and a unit
/// taken before its entry is. Throws CAtlException when it can't be made.
class SampleQueue {
public:
    struct Entry {
        CComPtr<IMediaSample> sample;
        std::uint32_t run = 0;  ///< number of the run that it came in
    };

    /// Throws std::bad_alloc.
    void append(Entry entry);
    /// For who has taken a unit; none when there is a unit without an entry.
    std::optional<Entry> takeFront();
    /// Takes every unit there is, and an entry for each.
    void drain();

    /// Waits for a unit take place on this.
    HANDLE semaphore() const noexcept { return semaphore_; }

private:
    std::optional<Entry> takeFrontLocked();

    std::deque<Entry> entries_;
    CSemaphore semaphore_{0, 0x7FFFFFFF};
    CCriticalSection lock_{0};
};

}  // namespace mvrtpfec
