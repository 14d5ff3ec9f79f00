#pragma once

#include <atomic>

#include "platform/graph/media_filters.h"
#include "rtp_media/send/rtp_scheduler.h"

namespace mvrtpfec::test {

/// A clock that stands until it is moved.
class HandClock final : public IReferenceClock {
public:
    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTime(REFERENCE_TIME* time) override {
        *time = now;
        return result;
    }
    STDMETHODIMP AdviseTime(REFERENCE_TIME, REFERENCE_TIME, HEVENT, DWORD_PTR*) override { return E_NOTIMPL; }
    STDMETHODIMP AdvisePeriodic(REFERENCE_TIME, REFERENCE_TIME, HSEMAPHORE, DWORD_PTR*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Unadvise(DWORD_PTR) override { return E_NOTIMPL; }

    std::atomic<REFERENCE_TIME> now{1000 * second};
    std::atomic<HRESULT> result{S_OK};

    static constexpr REFERENCE_TIME second = 10'000'000;
    static constexpr REFERENCE_TIME millisecond = 10'000;
};

/// A scheduler whose rounds its owner goes by hand; its worker is never told to run.
class HandScheduler : public RTPScheduler {
public:
    using RTPScheduler::round;
    using RTPScheduler::RTPScheduler;
};

}  // namespace mvrtpfec::test
