#include "bench/bench_filters.h"

#include <atomic>
#include <condition_variable>
#include <mutex>

#include "mvrtpfec/rtp_media_type.h"
#include "platform/wide_literal.h"

namespace mvrtpfec::bench {

using platform::operator""_w;

namespace {

/// Lets a source that has found the pool empty sleep until half of it is home, as one does that cares for
/// the cost of changing threads.
class BenchAllocator final : public CBaseAllocator {
public:
    static constexpr LONG buffers = 1024;

    BenchAllocator() : CBaseAllocator(nullptr, nullptr) {}

    HRESULT take(CMediaSample** sample) {
        const HRESULT result = TakeSample(sample, AM_GBF_NOWAIT);
        if (result != VFW_E_TIMEOUT) return result;
        std::unique_lock lock(mutex_);
        awaited_ = buffers / 2;
        halfHome_.wait(lock, [this] { return awaited_ == 0 || isHalfHome(); });
        awaited_ = 0;
        lock.unlock();
        return TakeSample(sample, 0);
    }

private:
    void OnRelease(CMediaSample&) noexcept override {
        if (awaited_ <= 0 || --awaited_ > 0) return;
        const std::lock_guard lock(mutex_);
        halfHome_.notify_one();
    }

    bool isHalfHome() {
        LONG home = 0;
        GetFreeCount(&home);
        return home >= buffers / 2;
    }

    std::mutex mutex_;
    std::condition_variable halfHome_;
    std::atomic<LONG> awaited_{0};
};

}  // namespace

class BenchSource::Pin final : public CBaseOutputPin {
public:
    Pin(CBaseFilter* filter, CCritSec* lock, HRESULT* result)
        : CBaseOutputPin(nullptr, filter, lock, result, "Out"_w),
          // NOLINTNEXTLINE(cppcoreguidelines-owning-memory)
          samples_(new BenchAllocator) {}

    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
    HRESULT GetMediaType(int position, CMediaType* type) override {
        if (position != 0) return VFW_S_NO_MORE_ITEMS;
        *type = CMediaType(MEDIATYPE_Rtp, MEDIASUBTYPE_Rtp);
        return S_OK;
    }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override {
        *request = {BenchAllocator::buffers, 1, 1, 0};
        ALLOCATOR_PROPERTIES actual{};
        return allocator->SetProperties(request, &actual);
    }
    HRESULT DecideAllocator(IMemInputPin* input, IMemAllocator** allocator) override {
        ALLOCATOR_PROPERTIES request{};
        HRESULT result = DecideBufferSize(samples_, &request);
        if (SUCCEEDED(result)) result = input->NotifyAllocator(samples_, FALSE);
        return FAILED(result) ? result : CComPtr<IMemAllocator>(samples_.p).CopyTo(allocator);
    }

    HRESULT deliver(RtpPacketView packet) {
        CComPtr<CMediaSample> sample;
        const HRESULT result = samples_->take(&sample);
        if (FAILED(result)) return result;
        sample->SetPointer(packet.data, packet.length);
        return Deliver(sample);
    }

private:
    CComPtr<BenchAllocator> samples_;
};

BenchSource::BenchSource(std::size_t pins) : CBaseFilter(nullptr, nullptr, &lock_, GUID_NULL) {
    HRESULT result = S_OK;
    for (std::size_t i = 0; i < pins; ++i) pins_.push_back(std::make_unique<Pin>(this, &lock_, &result));
}

BenchSource::~BenchSource() = default;

CBasePin* BenchSource::GetPin(int index) {
    return pins_[static_cast<std::size_t>(index)].get();
}

HRESULT BenchSource::deliver(std::size_t pin, RtpPacketView packet) {
    return pins_[pin]->deliver(packet);
}

class BenchSink::Pin final : public CBaseInputPin {
public:
    Pin(CBaseFilter* filter, CCritSec* lock, HRESULT* result)
        : CBaseInputPin(nullptr, filter, lock, result, "In"_w) {}

    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
    STDMETHODIMP ReceiveCanBlock() override { return S_FALSE; }
};

BenchSink::BenchSink(std::size_t pins) : CBaseFilter(nullptr, nullptr, &lock_, GUID_NULL) {
    HRESULT result = S_OK;
    for (std::size_t i = 0; i < pins; ++i) pins_.push_back(std::make_unique<Pin>(this, &lock_, &result));
}

BenchSink::~BenchSink() = default;

CBasePin* BenchSink::GetPin(int index) {
    return pins_[static_cast<std::size_t>(index)].get();
}

}  // namespace mvrtpfec::bench
