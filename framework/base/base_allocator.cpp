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
        decommitPending_ = out_ > 0;
        if (!decommitPending_) Free();
    }
    changed_.notify_all();
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
    }
    (*sample)->startUse();
    return S_OK;
}

HRESULT CBaseAllocator::waitForSample(std::unique_lock<platform::LightMutex>& lock, DWORD flags) noexcept {
    const unsigned decommits = decommits_;
    while (committed_ && decommits_ == decommits) {
        if (free_ != nullptr) return S_OK;
        if ((flags & AM_GBF_NOWAIT) != 0) return VFW_E_TIMEOUT;
        ++waiting_;
        changed_.wait(lock);
        --waiting_;
    }
    return VFW_E_NOT_COMMITTED;
}

STDMETHODIMP CBaseAllocator::ReleaseBuffer(IMediaSample* buffer) {
    if (buffer == nullptr) return E_POINTER;
    auto& sample = static_cast<CMediaSample&>(*buffer);
    OnRelease(sample);
    giveBack(sample);
    return S_OK;
}

void CBaseAllocator::OnRelease(CMediaSample&) noexcept {}

void CBaseAllocator::giveBack(CMediaSample& sample) noexcept {
    CComPtr<IMemAllocatorNotifyCallbackTemp> callback;
    bool last = false;
    {
        const std::lock_guard lock(mutex_);
        pushLocked(sample);
        --out_;
        last = orphaned_ && out_ == 0;
        callback = notify_;
        // Told under the lock: without it, who has been told may already have destroyed the allocator.
        if (waiting_ > 0) changed_.notify_one();
        if (decommitPending_ && out_ == 0) {
            decommitPending_ = false;
            Free();
        }
    }
    if (callback != nullptr) callback->NotifyRelease();
    if (last) CUnknown::OnFinalRelease();
}

void CBaseAllocator::OnFinalRelease() noexcept {
    {
        const std::lock_guard lock(mutex_);
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
    return S_OK;
}

STDMETHODIMP CBaseAllocator::GetFreeCount(LONG* freeBuffers) {
    if (freeBuffers == nullptr) return E_POINTER;
    const std::lock_guard lock(mutex_);
    *freeBuffers = properties_.cBuffers - out_;
    return S_OK;
}

}  // namespace mvrtpfec
