#include <atomic>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/picture_source.h"
#include "bench/targets.h"
#include "framework/base/com_ptr.h"
#include "host/stream/steady_clock.h"
#include "rtp_media/chain/simple_media_data.h"
#include "tests/rtp_media/send/hand_scheduler.h"

namespace mvrtpfec::bench {

namespace {

constexpr std::int64_t packetsARound = 15;  // of each stream: 1000 a second
constexpr REFERENCE_TIME millisecond = test::HandClock::millisecond;

/// Takes every packet into the same buffer.
class NullOutput : public IOutputPin {
public:
    HRESULT Deliver(IMediaData*) override {
        ++delivered;
        return S_OK;
    }
    HRESULT DeliverEndOfStream() override { return S_OK; }
    HRESULT GetDeliveryBuffer(IMediaData** data, REFERENCE_TIME*, REFERENCE_TIME*, DWORD) override {
        buffer_->AddRef();
        *data = buffer_.p;
        return S_OK;
    }
    HRESULT DecideBufferSize(IMemAllocator*, ALLOCATOR_PROPERTIES*) override { return S_OK; }
    HRESULT Active() override { return S_OK; }
    HRESULT Inactive() override { return S_OK; }

    std::int64_t delivered = 0;

private:
    CComPtr<SimpleMediaData> buffer_ = SimpleMediaData::create(std::vector<BYTE>(1500));
};

/// As the worker itself goes round, on the system's clock; an error when a packet leaves late.
class LateCount : public mvn::log::DummyLogPerf {
public:
    void AddPoliticChoices(std::int32_t) override { ++late; }
    std::atomic<std::int64_t> late{0};
};

void scheduleLive(benchmark::State& state) {
    constexpr std::size_t streams = 1000;
    constexpr std::int64_t packets = 1000;  // of each stream, a second's
    constexpr std::size_t smallPayload = 188;
    for (auto _ : state) {
        SteadyClock clock;
        LateCount log;
        NullOutput media;
        NullOutput reports;
        std::deque<PictureSource> sources;
        for (std::size_t i = 0; i < streams; ++i) sources.emplace_back(smallPayload);
        RTPScheduler scheduler(&clock, {});
        scheduler.setLogger(&log);
        for (std::uint32_t i = 0; i < streams; ++i)
            scheduler.addStream(i, StreamType::mpeg4Visual, 5000, 96, &media, &reports, &sources[i], 0,
                                ParameterSetMode::sdp);
        // The first is due when everything is there.
        const REFERENCE_TIME start = SteadyClock::now() + 1000 * millisecond;
        for (std::int64_t i = 0; i < packets; ++i) {
            for (auto& source : sources) source.give(start - 2000 * millisecond + i * millisecond);
        }
        scheduler.run();
        scheduler.drain();
        if (media.delivered != packets * static_cast<std::int64_t>(streams))
            state.SkipWithError("packets are missing");
        if (log.late > 0) state.SkipWithError((std::to_string(log.late) + " packets were late").c_str());
    }
}

void scheduleRounds(benchmark::State& state, std::uint32_t count) {
    test::HandClock clock;
    NullOutput media;
    NullOutput reports;
    std::vector<PictureSource> sources(count);
    test::HandScheduler scheduler(&clock, {});
    for (std::uint32_t i = 0; i < count; ++i)
        scheduler.addStream(i, StreamType::mpeg4Visual, 5000, 96, &media, &reports, &sources[i], 0,
                            ParameterSetMode::sdp);
    for (auto _ : state) {
        state.PauseTiming();
        for (auto& source : sources) {
            for (std::int64_t i = 0; i < packetsARound; ++i)
                source.give(clock.now - 2000 * millisecond + i * millisecond);
        }
        clock.now += packetsARound * millisecond;
        state.ResumeTiming();
        scheduler.round();
    }
    const std::int64_t packets = state.iterations() * packetsARound * count;
    if (media.delivered != packets) state.SkipWithError("packets are missing");
    state.SetItemsProcessed(packets);
}

}  // namespace

void registerScheduleBenchmarks() {
    benchmark::RegisterBenchmark("schedule/1000-streams", scheduleRounds, 1000);
    benchmark::RegisterBenchmark("schedule/2000-streams", scheduleRounds, 2000);
    benchmark::RegisterBenchmark("schedule/1000-streams-live", scheduleLive)->Iterations(1)->Repetitions(1);
    // A million packets a second in all leave a microsecond for each.
    addTarget({"schedule/1000-streams", "schedule/1000-streams", "", 1000});
    // The figures are a packet's: what grows beyond the streams is what more packets miss the caches.
    addTarget({"schedule/2000 to 1000 streams", "schedule/2000-streams", "schedule/1000-streams", 2.0});
}

}  // namespace mvrtpfec::bench
