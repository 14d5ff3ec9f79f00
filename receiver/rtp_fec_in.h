#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <utility>

#include "core/reorder_buffer.h"
#include "core/replaceable_decoder.h"
#include "framework/base/atl_sync.h"
#include "framework/base/base_filter.h"
#include "mvrtpfec/rtp_fec_in.h"
#include "receiver/morvane_input_pin.h"
#include "receiver/rtp_fec_in_input_pin.h"
#include "receiver/rtp_fec_in_output_pin.h"
#include "receiver/sample_queue.h"
#include "support/log/dummy_log_perf.h"
#include "support/log/smart_log_perf.h"
#include "support/thread.h"

namespace mvrtpfec {

/// "Morvane Rtp Fec In": takes a stream of RTP media packets and its FEC streams, one on each of three
/// inputs, rebuilds what is missing and delivers the media in order on "Output", one whole packet a sample.
///
/// An input's thread puts its samples in order and queues what is due; one worker thread, which lives as long
/// as the filter, feeds the queue to the decoder and delivers what that releases. The end of a stream on an
/// input goes no further. What the decoder holds at Stop is lost.
///
/// Locks: filter lock, then queue lock; the decoder lock alone. The decoder lock is held while downstream
/// receives, so Stop's last step, a Pause from stopped and the statistics wait for a blocked one.
class CRtpFecIn final : public CBaseFilter,
                        public IRtpFecInConfig,
                        public IRtpFecInTotals,
                        public ISpecifyPropertyPages {
public:
    static constexpr std::size_t inputCount = 3;

    /// The new filter, without a reference yet, or null and why in `result` (which may be null).
    static CUnknown* CreateInstance(IUnknown* outer, HRESULT* result);

    /// Throws CAtlException, std::bad_alloc.
    CRtpFecIn(IUnknown* outer, HRESULT* result);
    /// Waits for the worker.
    ~CRtpFecIn() override;

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;

    /// "Input #1" to "Input #3", "Output".
    int GetPinCount() override { return inputCount + 1; }
    CBasePin* GetPin(int index) override;

    STDMETHODIMP Pause() override;
    STDMETHODIMP Run(REFERENCE_TIME start) override;
    STDMETHODIMP Stop() override;

    STDMETHODIMP SetLogPerf(mvn::log::ILogPerf* logger) override;
    STDMETHODIMP SetErrorSink(IErrorSink* sink) override;
    /// E_POINTER when any of the four is null.
    STDMETHODIMP GetStatistics(std::uint64_t* lost, std::uint64_t* rebuilt, std::uint64_t* abandoned,
                               std::uint64_t* received) override;
    STDMETHODIMP GetTotals(RtpFecInTotals* totals) override;
    STDMETHODIMP GetPages(CAUUID* pages) override;

    /// A sample for an input, or null for the end of its stream. Throws what a reorder buffer throws.
    HRESULT Receive(std::int32_t input, CComPtr<IMediaSample> sample);

    mvn::log::ILogPerf& Statistics() noexcept { return statistics_; }

private:
    using ReorderBuffer = CRtpPacketReorderBuffer<CComPtr<IMediaSample>>;

    struct Worker {
        explicit Worker(CRtpFecIn& owner) : thread([&owner] { owner.ProcessSamples(); }) {}

        CEvent stopEvent{false, false};
        mvn::Thread thread;
    };

    void ProcessSamples();
    void processNext();
    HRESULT ProcessSample(IMediaSample* sample);
    /// Throws mvn::COMException and nothing else, since decoders are destroyed while they deliver.
    void DeliverPacket(RtpPacket* packet);
    HRESULT deliver(ConstRtpPacketView packet);
    void report(HRESULT error);

    void DestroyDecoder();
    void startRun();

    // In this order: the last one goes first.
    std::unique_ptr<Worker> worker_;
    std::array<std::unique_ptr<CMorvaneInputPin<CRtpFecInInputPin>>, inputCount> inputs_;
    std::unique_ptr<CRtpFecInOutputPin> output_;
    std::array<std::unique_ptr<ReorderBuffer>, inputCount> reorderBuffers_;
    CCritSec filterLock_;
    SampleQueue sampleQueue_;
    mvn::log::SmartLogPerf<mvn::log::DummyLogPerf> statistics_;
    std::atomic<IErrorSink*> errorSink_{nullptr};
    CCriticalSection decoderLock_{0};
    /// What the worker makes for a sample that Stop missed belongs to no run and isn't counted.
    ReplaceableDecoder decoder_{[this](RtpPacket* packet) { DeliverPacket(packet); }};
    std::atomic<std::uint32_t> run_{0};  ///< counts the starts from stopped
};

}  // namespace mvrtpfec
