#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "framework/base/unknown.h"
#include "framework/samples/media_sample.h"
#include "platform/threads/light_mutex.h"
#include "platform/threads/wake_count.h"

namespace mvrtpfec {

/// A pool of samples. What their payload is, derived classes say through the hooks. Any number of threads
/// may call; a waiting GetBuffer sleeps until a sample comes home or the pool is decommitted. Each sample
/// that is out keeps the allocator alive. The lock is never held while calling out; taking and
/// giving back a sample with nobody waiting costs one short lock and neither a system call nor memory.
class CBaseAllocator : public CUnknown, public IMemAllocatorCallbackTemp {
public:
    CBaseAllocator(const char* name, IUnknown* outer) noexcept;

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;

    /// The buffer size is rounded up so that buffer plus prefix is a multiple of the alignment. E_INVALIDARG
    /// for counts and sizes below 1, a prefix below 0 and a pool whose size can't be expressed;
    /// VFW_E_BADALIGN unless the alignment is a power of two; VFW_E_ALREADY_COMMITTED;
    /// VFW_E_BUFFERS_OUTSTANDING.
    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override;
    STDMETHODIMP GetProperties(ALLOCATOR_PROPERTIES* properties) override;
    /// Takes back a decommit that is pending. VFW_E_SIZENOTSET before SetProperties.
    STDMETHODIMP Commit() override;
    /// Wakes those who wait; complete once every sample is home.
    STDMETHODIMP Decommit() override;
    /// VFW_E_NOT_COMMITTED, also when decommitted while it waited; VFW_E_TIMEOUT with AM_GBF_NOWAIT. The
    /// times and the other flags are not looked at.
    STDMETHODIMP GetBuffer(IMediaSample** buffer, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                           DWORD flags) override;
    /// For the samples of this pool themselves, when their count reaches 0.
    STDMETHODIMP ReleaseBuffer(IMediaSample* buffer) override;

    /// The callback hears of every sample that comes home; null ends that.
    STDMETHODIMP SetNotify(IMemAllocatorNotifyCallbackTemp* callback) override;
    /// The samples that are not out right now, committed or not.
    STDMETHODIMP GetFreeCount(LONG* freeBuffers) override;

    /// GetBuffer by the sample's own type.
    HRESULT TakeSample(CMediaSample** sample, DWORD flags) noexcept;

protected:
    /// Called when a commit begins, under the lock: it may use propertiesLocked() and areSamplesStale() but
    /// none of the public operations. The plain one makes the samples by MakeSample when the properties
    /// have changed since they were made. May throw.
    virtual HRESULT Alloc();
    /// Called when a decommit is complete, every sample home, under the lock. An allocator destroyed while
    /// committed is not asked. Samples are kept for the next commit.
    virtual void Free() noexcept {}
    /// One of cBuffers samples, called by Alloc. The plain one has no payload; whoever takes it sets one.
    virtual std::unique_ptr<CMediaSample> MakeSample(LONG index);
    /// Called without the lock when a sample's last reference has gone, before it can be taken again.
    virtual void OnRelease(CMediaSample& sample) noexcept;

    /// Samples that are out keep the allocator.
    void OnFinalRelease() noexcept override;

    const ALLOCATOR_PROPERTIES& propertiesLocked() const noexcept { return properties_; }
    bool areSamplesStale() const noexcept { return samplesStale_; }

private:
    bool hasSameSizes(const ALLOCATOR_PROPERTIES& other) const noexcept;
    HRESULT allocLocked() noexcept;
    HRESULT waitForSample(std::unique_lock<platform::LightMutex>& lock, DWORD flags) noexcept;
    void sleep(std::unique_lock<platform::LightMutex>& lock) noexcept;
    void giveBack(CMediaSample& sample) noexcept;
    void giveBackLocked(CMediaSample& sample) noexcept;
    void askForAttention() noexcept;
    void collectLocked() noexcept;
    void pushLocked(CMediaSample& sample) noexcept;
    CMediaSample& popLocked() noexcept;

    mutable platform::LightMutex mutex_;
    platform::WakeCount wakeUps_;
    int waiting_ = 0;

    ALLOCATOR_PROPERTIES properties_{};
    bool samplesStale_ = true;
    bool committed_ = false;
    bool decommitPending_ = false;
    /// Tells a waiting thread that it was decommitted, whatever has happened since.
    unsigned decommits_ = 0;

    std::vector<std::unique_ptr<CMediaSample>> samples_;
    CMediaSample* free_ = nullptr;
    LONG out_ = 0;           ///< those that have come home and not been collected count as out
    bool orphaned_ = false;  ///< its last reference has gone while samples were out
    CComPtr<IMemAllocatorNotifyCallbackTemp> notify_;

    /// The thread that took a sample last. What comes home on it goes straight to the free list, where the
    /// sample used last is the next: its memory is still in the cache.
    std::atomic<const void*> taker_{nullptr};

    /// The samples that have come home on other threads since they were last collected: the address of the
    /// last one, and whether somebody must hear of the next. Such a thread touches nothing else, so that it
    /// and the taker don't pull one cache line back and forth. Nothing of the allocator may be touched once
    /// a sample is in this list: it may have been the last.
    alignas(64) std::atomic<std::uintptr_t> home_{0};
};

}  // namespace mvrtpfec
