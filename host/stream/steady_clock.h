#pragma once

#include <chrono>

#include "platform/graph/media_filters.h"

namespace mvrtpfec {

/// A reference clock that tells the time since some moment and nothing else. Lives on its owner's account,
/// whatever its references.
class SteadyClock final : public IReferenceClock {
public:
    /// 100 ns
    static REFERENCE_TIME now() {
        using Unit = std::chrono::duration<REFERENCE_TIME, std::ratio<1, 10'000'000>>;
        return std::chrono::duration_cast<Unit>(std::chrono::steady_clock::now().time_since_epoch()).count();
    }

    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTime(REFERENCE_TIME* time) override {
        *time = now();
        return S_OK;
    }
    STDMETHODIMP AdviseTime(REFERENCE_TIME, REFERENCE_TIME, HEVENT, DWORD_PTR*) override { return E_NOTIMPL; }
    STDMETHODIMP AdvisePeriodic(REFERENCE_TIME, REFERENCE_TIME, HSEMAPHORE, DWORD_PTR*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Unadvise(DWORD_PTR) override { return E_NOTIMPL; }
};

}  // namespace mvrtpfec
