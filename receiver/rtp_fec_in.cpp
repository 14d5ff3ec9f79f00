#include "receiver/rtp_fec_in.h"

#include <algorithm>
#include <new>
#include <utility>

#include "framework/guarded_entry.h"
#include "platform/component/task_memory.h"
#include "platform/wide_literal.h"
#include "receiver/sample_sequence_number.h"

namespace mvrtpfec {

using platform::operator""_w;

namespace {

constexpr std::array inputNames = {"Input #1"_w, "Input #2"_w, "Input #3"_w};

/// As guardedEntry, but std::bad_alloc becomes E_OUTOFMEMORY.
template <class Work>
HRESULT tellingLackOfMemory(Work&& work) noexcept {
    return guardedEntry([&] {
        try {
            return work();
        } catch (const std::bad_alloc&) {
            return HRESULT{E_OUTOFMEMORY};
        }
    });
}

}  // namespace

CUnknown* CRtpFecIn::CreateInstance(IUnknown* outer, HRESULT* result) {
    std::unique_ptr<CRtpFecIn> filter;
    const HRESULT outcome = tellingLackOfMemory([&] {
        HRESULT pins = S_OK;
        filter = std::make_unique<CRtpFecIn>(outer, &pins);
        return pins;
    });
    if (result != nullptr) *result = outcome;
    return FAILED(outcome) ? nullptr : filter.release();
}

CRtpFecIn::CRtpFecIn(IUnknown* outer, HRESULT* result)
    : CBaseFilter(nullptr, outer, &filterLock_, CLSID_RtpFecIn) {
    for (std::size_t i = 0; i < inputCount; ++i) {
        reorderBuffers_[i] = std::make_unique<ReorderBuffer>(receiverReorderCapacity, maxRtpSequenceNumber,
                                                             GetRtpSequenceNumber);
        auto handler = std::make_shared<CRtpFecInInputPin>(static_cast<std::int32_t>(i), this);
        inputs_[i] =
            std::make_unique<CMorvaneInputPin<CRtpFecInInputPin>>(this, inputNames[i], std::move(handler));
    }
    output_ = std::make_unique<CRtpFecInOutputPin>(this, result);
    worker_ = std::make_unique<Worker>(*this);
    worker_->thread.Start();
}

CRtpFecIn::~CRtpFecIn() {
    worker_->stopEvent.Set();
    WaitForSingleObject(worker_->thread.Handle(), INFINITE);
    DestroyDecoder();
}

HRESULT CRtpFecIn::NonDelegatingQueryInterface(REFIID riid, void** object) {
    if (riid == IID_IRtpFecInConfig) return GetInterface(static_cast<IRtpFecInConfig*>(this), object);
    if (riid == IID_IRtpFecInTotals) return GetInterface(static_cast<IRtpFecInTotals*>(this), object);
    if (riid == IID_ISpecifyPropertyPages)
        return GetInterface(static_cast<ISpecifyPropertyPages*>(this), object);
    return CBaseFilter::NonDelegatingQueryInterface(riid, object);
}

CBasePin* CRtpFecIn::GetPin(int index) {
    if (index == inputCount) return output_.get();
    return index >= 0 && index < static_cast<int>(inputCount) ? inputs_[static_cast<std::size_t>(index)].get()
                                                              : nullptr;
}

HRESULT CRtpFecIn::GetPages(CAUUID* pages) {
    if (pages == nullptr) return E_POINTER;
    pages->cElems = 1;
    pages->pElems = static_cast<GUID*>(CoTaskMemAlloc(sizeof(GUID)));
    if (pages->pElems == nullptr) return E_OUTOFMEMORY;
    *pages->pElems = CLSID_RtpFecInPropertyPage;
    return S_OK;
}

HRESULT CRtpFecIn::Receive(std::int32_t input, CComPtr<IMediaSample> sample) {
    const CAutoLock lock(&filterLock_);
    if (m_State == State_Stopped) return S_OK;
    if (sample == nullptr) {
        sampleQueue_.append({nullptr, run_});
        return S_OK;
    }
    ReorderBuffer& buffer = *reorderBuffers_[static_cast<std::size_t>(input)];
    buffer.Push(std::move(sample));
    CComPtr<IMediaSample> due;
    while (buffer.Pop(due)) sampleQueue_.append({std::move(due), run_});
    return S_OK;
}

void CRtpFecIn::ProcessSamples() {
    const HANDLE handles[] = {worker_->stopEvent, sampleQueue_.semaphore()};
    while (WaitForMultipleObjects(2, handles, FALSE, INFINITE) != WAIT_OBJECT_0) processNext();
}

void CRtpFecIn::processNext() {
    const auto entry = sampleQueue_.takeFront();
    if (!entry) return;
    const HRESULT result = tellingLackOfMemory([&] {
        const CAutoLock lock(&decoderLock_);
        // The worker may have held it while the filter was stopped and started again.
        return entry->run == run_ ? ProcessSample(entry->sample) : S_OK;
    });
    if (FAILED(result) && result != VFW_E_NOT_COMMITTED) report(result);
}

void CRtpFecIn::report(HRESULT error) {
    guardedEntry([&] {
        if (IErrorSink* sink = errorSink_) sink->OnError(error);
        return S_OK;
    });
}

HRESULT CRtpFecIn::ProcessSample(IMediaSample* sample) {
    const CAutoLock lock(&decoderLock_);
    decoder_.provide();
    if (sample == nullptr) return S_OK;
    const LONG length = sample->GetActualDataLength();
    BYTE* data = nullptr;
    const HRESULT result = sample->GetPointer(&data);
    if (FAILED(result)) return result;
    if (data == nullptr) return E_POINTER;
    decoder_.feed(data, length < 0 ? 0 : static_cast<std::size_t>(length));
    return S_OK;
}

void CRtpFecIn::DeliverPacket(RtpPacket* packet) {
    const HRESULT result = guardedEntry([&] { return deliver(packet->view); });
    if (FAILED(result)) throw mvn::COMException(result);
}

HRESULT CRtpFecIn::deliver(ConstRtpPacketView packet) {
    CComPtr<IMediaSample> sample;
    HRESULT result = output_->GetDeliveryBuffer(&sample, nullptr, nullptr, 0);
    if (FAILED(result)) return result;
    BYTE* buffer = nullptr;
    result = sample->GetPointer(&buffer);
    if (FAILED(result)) return result;
    // Received packets pass no length test on their way here.
    if (buffer == nullptr || sample->GetSize() < LONG{packet.length}) return VFW_E_BUFFER_OVERFLOW;
    std::copy_n(packet.data, packet.length, buffer);
    sample->SetActualDataLength(packet.length);
    sample->SetSyncPoint(FALSE);
    sample->SetDiscontinuity(FALSE);
    sample->SetTime(nullptr, nullptr);
    output_->Deliver(sample);
    return S_OK;
}

void CRtpFecIn::DestroyDecoder() {
    const CAutoLock lock(&decoderLock_);
    decoder_.end();
}

HRESULT CRtpFecIn::Pause() {
    return guardedEntry([&] {
        const FILTER_STATE before = m_State;
        if (before == State_Stopped) ++run_;
        const HRESULT result = CBaseFilter::Pause();
        if (FAILED(result)) return result;
        if (before == State_Stopped) startRun();
        return S_OK;
    });
}

void CRtpFecIn::startRun() {
    const CAutoLock lock(&decoderLock_);
    decoder_.begin();
}

/// The base class pauses a stopped filter while it holds the filter lock, inside which the decoder lock must
/// not be waited for.
HRESULT CRtpFecIn::Run(REFERENCE_TIME start) {
    if (m_State == State_Stopped) {
        const HRESULT result = Pause();
        if (FAILED(result)) return result;
    }
    return CBaseFilter::Run(start);
}

HRESULT CRtpFecIn::Stop() {
    return guardedEntry([&] {
        const HRESULT result = CBaseFilter::Stop();
        if (FAILED(result)) return result;
        DestroyDecoder();
        {
            const CAutoLock lock(&filterLock_);
            for (auto& buffer : reorderBuffers_) buffer->Clear();
        }
        sampleQueue_.drain();
        return S_OK;
    });
}

HRESULT CRtpFecIn::SetLogPerf(mvn::log::ILogPerf* logger) {
    statistics_.SetTarget(logger);
    return S_OK;
}

HRESULT CRtpFecIn::SetErrorSink(IErrorSink* sink) {
    errorSink_ = sink;
    return S_OK;
}

HRESULT CRtpFecIn::GetStatistics(std::uint64_t* lost, std::uint64_t* rebuilt, std::uint64_t* abandoned,
                                 std::uint64_t* received) {
    if (lost == nullptr || rebuilt == nullptr || abandoned == nullptr || received == nullptr)
        return E_POINTER;
    const CAutoLock lock(&decoderLock_);
    const CFecDecoder* decoder = decoder_.current();
    if (decoder == nullptr) return E_FAIL;
    *lost = decoder->lostCount();
    *rebuilt = decoder->rebuiltCount();
    *abandoned = decoder->abandonedCount();
    *received = decoder->receivedCount();
    return S_OK;
}

HRESULT CRtpFecIn::GetTotals(RtpFecInTotals* totals) {
    if (totals == nullptr) return E_POINTER;
    const CAutoLock lock(&decoderLock_);
    *totals = decoder_.totals();
    return S_OK;
}

}  // namespace mvrtpfec
