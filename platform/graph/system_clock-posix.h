#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

#include "platform/component/counted.h"
#include "platform/graph/media_filters.h"

namespace platform {

/// The steady clock as a reference clock. One thread, which starts with the first advise and ends with the
/// clock, sleeps until the next one is due.
class SystemClock final : public Counted<IReferenceClock> {
public:
    SystemClock() = default;

    STDMETHODIMP QueryInterface(REFIID riid, void** object) override;
    /// S_FALSE when the time is still what it was at the last call.
    STDMETHODIMP GetTime(REFERENCE_TIME* time) override;
    /// Sets the event once, at the sum of the times, which must be positive.
    STDMETHODIMP AdviseTime(REFERENCE_TIME baseTime, REFERENCE_TIME streamTime, HEVENT event,
                            DWORD_PTR* cookie) override;
    /// Releases the semaphore at the start time and after each period, both positive; by several units at
    /// once when periods were missed, by one when it can't take as many.
    STDMETHODIMP AdvisePeriodic(REFERENCE_TIME startTime, REFERENCE_TIME periodTime, HSEMAPHORE semaphore,
                                DWORD_PTR* cookie) override;
    /// Afterwards the object is left alone. S_FALSE for a cookie that has no advise (any more).
    STDMETHODIMP Unadvise(DWORD_PTR cookie) override;

private:
    struct Advise {
        DWORD_PTR cookie;
        REFERENCE_TIME period;  ///< 0: once
        HANDLE object;
    };

    ~SystemClock() override;

    HRESULT advise(REFERENCE_TIME due, REFERENCE_TIME period, DWORD_PTR object, DWORD_PTR* cookie);
    void work();
    void signalDue(REFERENCE_TIME now);
    static REFERENCE_TIME signal(const Advise& advise, REFERENCE_TIME due, REFERENCE_TIME now);

    std::atomic<REFERENCE_TIME> lastTime_{0};
    std::mutex mutex_;
    std::condition_variable changed_;
    std::multimap<REFERENCE_TIME, Advise> due_;
    DWORD_PTR nextCookie_ = 1;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace platform
