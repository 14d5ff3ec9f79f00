#include "framework/base/base_allocator.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>

namespace mvrtpfec {

namespace {

/// A multiple of the power of two `alignment`.
std::int64_t roundUp(std::int64_t size, std::int64_t alignment) noexcept {
    return (size + alignment - 1) & -alignment;
}

/// Tells threads apart; none while it runs has another's.
const void* currentThread() noexcept {
    static thread_local const char mark = 0;
    return &mark;
}

bool isPowerOfTwo(LONG value) noexcept {
    return value > 0 && std::has_single_bit(static_cast<ULONG>(value));
}

/// Checks the properties and rounds the buffer size.
HRESULT makeValid(ALLOCATOR_PROPERTIES& properties) noexcept {
    if (!isPowerOfTwo(properties.cbAlign)) return VFW_E_BADALIGN;
    if (properties.cBuffers <= 0 || properties.cbBuffer <= 0 || properties.cbPrefix < 0) return E_INVALIDARG;
    const std::int64_t stride =
        roundUp(std::int64_t{properties.cbBuffer} + properties.cbPrefix, properties.cbAlign);
    const bool fits = stride <= std::numeric_limits<LONG>::max() &&
                      stride <= std::numeric_limits<std::ptrdiff_t>::max() / properties.cBuffers;
    if (!fits) return E_INVALIDARG;
    properties.cbBuffer = static_cast<LONG>(stride) - properties.cbPrefix;
    return S_OK;
}

}  // namespace

CBaseAllocator::CBaseAllocator(const char* name, IUnknown* outer) noexcept : CUnknown(name, outer) {}

STDMETHODIMP CBaseAllocator::NonDelegatingQueryInterface(REFIID riid, void** object) {
    if (riid == IID_IMemAllocator || riid == IID_IMemAllocatorCallbackTemp)
        return GetInterface(static_cast<IMemAllocatorCallbackTemp*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(riid, object);
}

STDMETHODIMP CBaseAllocator::SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) {
    if (request == nullptr || actual == nullptr) return E_POINTER;
    ALLOCATOR_PROPERTIES wanted = *request;
    if (const HRESULT result = makeValid(wanted); FAILED(result)) return result;
    const std::lock_guard lock(mutex_);
    if (committed_) return VFW_E_ALREADY_COMMITTED;
    collectLocked();
    if (out_ > 0) return VFW_E_BUFFERS_OUTSTANDING;
    samplesStale_ = samplesStale_ || !hasSameSizes(wanted);
    properties_ = wanted;
    *actual = wanted;
    return S_OK;
}

bool CBaseAllocator::hasSameSizes(const ALLOCATOR_PROPERTIES& other) const noexcept {
    return properties_.cBuffers == other.cBuffers && properties_.cbBuffer == other.cbBuffer &&
           properties_.cbAlign == other.cbAlign && properties_.cbPrefix == other.cbPrefix;
}

STDMETHODIMP CBaseAllocator::GetProperties(ALLOCATOR_PROPERTIES* properties) {
    if (properties == nullptr) return E_POINTER;
    const std::lock_guard lock(mutex_);
    *properties = properties_;
    return S_OK;
}

STDMETHODIMP CBaseAllocator::Commit() {
    const std::lock_guard lock(mutex_);
    if (properties_.cBuffers == 0) return VFW_E_SIZENOTSET;
    if (committed_) return S_OK;
    if (!decommitPending_) {
        if (const HRESULT result = allocLocked(); FAILED(result)) return result;
    }
    decommitPending_ = false;
    committed_ = true;
    return S_OK;
}

HRESULT CBaseAllocator::allocLocked() noexcept {
    try {
        return Alloc();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

HRESULT CBaseAllocator::Alloc() {
    if (!samplesStale_) return S_OK;
    std::vector<std::unique_ptr<CMediaSample>> samples;
    samples.reserve(static_cast<std::size_t>(properties_.cBuffers));
    for (LONG index = 0; index < properties_.cBuffers; ++index) {
        samples.push_back(MakeSample(index));
        if (samples.back() == nullptr) return E_OUTOFMEMORY;
    }
    free_ = nullptr;
    samples_ = std::move(samples);
    for (const auto& sample : samples_) pushLocked(*sample);
    samplesStale_ = false;
    return S_OK;
}

std::unique_ptr<CMediaSample> CBaseAllocator::MakeSample(LONG) {
    return std::make_unique<CMediaSample>("Sample", this, nullptr);
}

STDMETHODIMP CBaseAllocator::Decommit() {
    {
        const std::lock_guard lock(mutex_);
        if (!committed_) return S_OK;
        committed_ = false;
        ++decommits_;
        askForAttention();
        collectLocked();
        decommitPending_ = out_ > 0;
        if (!decommitPending_) Free();
        wakeUps_.wakeAll();
    }
    return S_OK;
}

STDMETHODIMP CBaseAllocator::GetBuffer(IMediaSample** buffer, REFERENCE_TIME*, REFERENCE_TIME*, DWORD flags) {
    if (buffer == nullptr) return E_POINTER;
    CMediaSample* sample = nullptr;
    const HRESULT result = TakeSample(&sample, flags);
    *buffer = sample;
    return result;
}

HRESULT CBaseAllocator::TakeSample(CMediaSample** sample, DWORD flags) noexcept {
    if (sample == nullptr) return E_POINTER;
    *sample = nullptr;
    {
        std::unique_lock lock(mutex_);
        if (const HRESULT result = waitForSample(lock, flags); FAILED(result)) return result;
        *sample = &popLocked();
        ++out_;
        taker_.store(currentThread(), std::memory_order_relaxed);
    }
    (*sample)->startUse();
    return S_OK;
}

HRESULT CBaseAllocator::waitForSample(std::unique_lock<platform::LightMutex>& lock, DWORD flags) noexcept {
    const unsigned decommits = decommits_;
    while (committed_ && decommits_ == decommits) {
        if (free_ == nullptr) collectLocked();
        if (free_ != nullptr) return S_OK;
        if ((flags & AM_GBF_NOWAIT) != 0) return VFW_E_TIMEOUT;
        ++waiting_;
        askForAttention();
        collectLocked();
        if (free_ == nullptr) sleep(lock);
        --waiting_;
    }
    return VFW_E_NOT_COMMITTED;
}

void CBaseAllocator::sleep(std::unique_lock<platform::LightMutex>& lock) noexcept {
    const std::uint32_t seen = wakeUps_.seen();
    lock.unlock();
    wakeUps_.waitPast(seen);
    lock.lock();
}

STDMETHODIMP CBaseAllocator::ReleaseBuffer(IMediaSample* buffer) {
    if (buffer == nullptr) return E_POINTER;
    auto& sample = static_cast<CMediaSample&>(*buffer);
    OnRelease(sample);
    giveBack(sample);
    return S_OK;
}

void CBaseAllocator::OnRelease(CMediaSample&) noexcept {}

namespace {

/// Stands in the lowest bit of home_, which no sample's address has.
constexpr std::uintptr_t attention = 1;
static_assert(alignof(CMediaSample) > attention);

}  // namespace

void CBaseAllocator::giveBack(CMediaSample& sample) noexcept {
    if (taker_.load(std::memory_order_relaxed) == currentThread()) return giveBackLocked(sample);
    std::uintptr_t home = home_.load(std::memory_order_acquire);
    do {
        // Until it is given back, the sample keeps the allocator alive.
        if ((home & attention) != 0) return giveBackLocked(sample);
        sample.next_ = reinterpret_cast<CMediaSample*>(home);
    } while (!home_.compare_exchange_weak(home, reinterpret_cast<std::uintptr_t>(&sample),
                                          std::memory_order_acq_rel, std::memory_order_acquire));
}

void CBaseAllocator::giveBackLocked(CMediaSample& sample) noexcept {
    CComPtr<IMemAllocatorNotifyCallbackTemp> callback;
    bool last = false;
    {
        const std::lock_guard lock(mutex_);
        if (home_.load(std::memory_order_relaxed) != 0) collectLocked();
        pushLocked(sample);
        --out_;
        last = orphaned_ && out_ == 0;
        callback = notify_;
        // Told under the lock: without it, who has been told may already have destroyed the allocator.
        if (waiting_ > 0) wakeUps_.wakeOne();
        if (decommitPending_ && out_ == 0) {
            decommitPending_ = false;
            Free();
        }
        const bool calm = waiting_ == 0 && !decommitPending_ && !orphaned_ && notify_ == nullptr;
        if (calm && home_.load(std::memory_order_relaxed) != 0)
            home_.fetch_and(~attention, std::memory_order_acq_rel);
    }
    if (callback != nullptr) callback->NotifyRelease();
    if (last) CUnknown::OnFinalRelease();
}

/// Whoever asks looks at the samples at home once more afterwards: who gave one back before did not see it.
void CBaseAllocator::askForAttention() noexcept {
    home_.fetch_or(attention, std::memory_order_acq_rel);
}

void CBaseAllocator::collectLocked() noexcept {
    std::uintptr_t home = home_.load(std::memory_order_acquire);
    while (home > attention && !home_.compare_exchange_weak(home, home & attention, std::memory_order_acq_rel,
                                                            std::memory_order_acquire)) {
    }
    auto* sample = reinterpret_cast<CMediaSample*>(home & ~attention);
    while (sample != nullptr) {
        CMediaSample* const next = sample->next_;
        pushLocked(*sample);
        --out_;
        sample = next;
    }
}

void CBaseAllocator::OnFinalRelease() noexcept {
    {
        const std::lock_guard lock(mutex_);
        askForAttention();
        collectLocked();
        orphaned_ = out_ > 0;
        if (orphaned_) return;
    }
    CUnknown::OnFinalRelease();
}

void CBaseAllocator::pushLocked(CMediaSample& sample) noexcept {
    sample.next_ = std::exchange(free_, &sample);
}

CMediaSample& CBaseAllocator::popLocked() noexcept {
    CMediaSample& sample = *free_;
    free_ = std::exchange(sample.next_, nullptr);
    return sample;
}

STDMETHODIMP CBaseAllocator::SetNotify(IMemAllocatorNotifyCallbackTemp* callback) {
    CComPtr<IMemAllocatorNotifyCallbackTemp> previous(callback);
    const std::lock_guard lock(mutex_);
    std::swap(notify_, previous);
    askForAttention();
    return S_OK;
}

STDMETHODIMP CBaseAllocator::GetFreeCount(LONG* freeBuffers) {
    if (freeBuffers == nullptr) return E_POINTER;
    const std::lock_guard lock(mutex_);
    collectLocked();
    *freeBuffers = properties_.cBuffers - out_;
    return S_OK;
}

}  // namespace mvrtpfec
