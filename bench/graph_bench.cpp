#include <memory>
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>
#include <sched.h>

#include "bench/arrivals.h"
#include "bench/bench_filters.h"
#include "bench/packet_ring.h"
#include "bench/targets.h"
#include "core/fec_composer.h"
#include "core/fec_decoder.h"
#include "core/reorder_buffer.h"
#include "platform/graph/media_graph.h"
#include "platform/wide_literal.h"
#include "receiver/rtp_fec_in.h"
#include "sender/rtp_fec_filter.h"

namespace mvrtpfec::bench {

namespace {

using platform::operator""_w;

constexpr std::int32_t side = 10;

void require(HRESULT result, const char* what) {
    if (FAILED(result)) throw std::runtime_error(std::string("graph bench: ") + what);
}

/// Threads made while it lives run on one core.
class OneCore {
public:
    explicit OneCore(bool wanted) {
        sched_getaffinity(0, sizeof all_, &all_);
        if (!wanted) return;
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
        sched_setaffinity(0, sizeof one, &one);
    }
    ~OneCore() { sched_setaffinity(0, sizeof all_, &all_); }

private:
    cpu_set_t all_;
};

CComPtr<IBaseFilter> asFilter(CUnknown* object) {
    if (object == nullptr) throw std::runtime_error("graph bench: a filter can't be created");
    void* filter = nullptr;
    object->NonDelegatingQueryInterface(IID_IBaseFilter, &filter);
    CComPtr<IBaseFilter> result;
    result.Attach(static_cast<IBaseFilter*>(filter));
    return result;
}

/// A source, the filter, a sink, connected pin by pin and running.
class Graph {
public:
    Graph(CUnknown* filter, std::size_t inputs, std::size_t outputs)
        : filter_(asFilter(filter)),
          source_(new BenchSource(inputs)),  // NOLINT(cppcoreguidelines-owning-memory)
          sink_(new BenchSink(outputs)) {    // NOLINT(cppcoreguidelines-owning-memory)
        require(platform::createFilterGraph(&graph_), "no graph");
        graph_->AddFilter(source_, "Source"_w);
        graph_->AddFilter(filter_, "Filter"_w);
        graph_->AddFilter(sink_, "Sink"_w);
        CComPtr<IEnumPins> pins;
        filter_->EnumPins(&pins);
        int input = 0;
        int output = 0;
        for (CComPtr<IPin> pin; pins->Next(1, &pin, nullptr) == S_OK; pin.Release()) {
            PIN_DIRECTION direction{};
            pin->QueryDirection(&direction);
            require(direction == PINDIR_INPUT ? graph_->ConnectDirect(source_->GetPin(input++), pin, nullptr)
                                              : graph_->ConnectDirect(pin, sink_->GetPin(output++), nullptr),
                    "pins can't be connected");
        }
        control_ = queryFor<IMediaControl>(graph_, IID_IMediaControl);
    }
    ~Graph() { control_->Stop(); }

    IBaseFilter* filter() { return filter_; }
    void run() { require(control_->Run(), "the graph can't be run"); }
    void deliver(std::size_t pin, RtpPacketView packet) {
        require(source_->deliver(pin, packet), "a packet is refused");
    }

private:
    CComPtr<IBaseFilter> filter_;
    CComPtr<BenchSource> source_;
    CComPtr<BenchSink> sink_;
    CComPtr<IGraphBuilder> graph_;
    CComPtr<IMediaControl> control_;
};

void sendByGraph(benchmark::State& state, std::size_t ringSize) {
    PacketRing ring(ringSize);
    HRESULT result = S_OK;
    Graph graph(CRtpFecFilter::CreateInstance(nullptr, &result), 1, 2);
    const auto config = queryFor<IFECoverRTPConfig>(graph.filter(), IID_IFECoverRTPConfig);
    config->SetColumns(side);
    config->SetRows(side);
    config->SetMode(fecBoth);
    graph.run();
    for (auto _ : state) graph.deliver(0, ring.next());
}

/// The filter's two composers, without filters.
void sendByCore(benchmark::State& state, std::size_t ringSize) {
    PacketRing ring(ringSize);
    const FecPacketSink sink = [](const std::shared_ptr<RtpPacket>& fec) {
        benchmark::DoNotOptimize(fec.get());
    };
    CFecComposer columns(sink, fecColumn, side, side);
    CFecComposer rows(sink, fecRow, side, side);
    for (auto _ : state) {
        const RtpPacketView media = ring.next();
        columns.protect(media);
        rows.protect(media);
    }
}

Arrivals makeArrivals(std::size_t ring) {
    return Arrivals(side, side, Loss::none, ring);
}

void setPerPacket(benchmark::State& state, const Arrivals& arrivals) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(arrivals.mediaCount()));
}

void receiveByGraph(benchmark::State& state, std::size_t ring, bool oneCore) {
    Arrivals arrivals = makeArrivals(ring);
    const OneCore affinity(oneCore);
    HRESULT result = S_OK;
    Graph graph(CRtpFecIn::CreateInstance(nullptr, &result), 3, 1);
    graph.run();
    bool again = false;
    for (auto _ : state) {
        for (const Arrivals::Packet& packet : arrivals.packets()) {
            if (again) arrivals.advance(packet);
            graph.deliver(static_cast<std::size_t>(packet.stream), {arrivals.bytesOf(packet), packet.length});
        }
        again = true;
    }
    setPerPacket(state, arrivals);
}

/// The filter's reorder buffers and decoder, without filters.
void receiveByCore(benchmark::State& state, std::size_t ring) {
    Arrivals arrivals = makeArrivals(ring);
    using Buffer = CRtpPacketReorderBuffer<const Arrivals::Packet*>;
    const auto keyOf = [&](const Arrivals::Packet* packet) -> std::int32_t {
        return readBigEndian16(arrivals.bytesOf(*packet) + 2);
    };
    Buffer buffers[] = {{20, 65535, keyOf}, {20, 65535, keyOf}, {20, 65535, keyOf}};
    CFecDecoder decoder([](RtpPacket* packet) { benchmark::DoNotOptimize(packet->view.data); });
    bool again = false;
    for (auto _ : state) {
        for (const Arrivals::Packet& packet : arrivals.packets()) {
            if (again) arrivals.advance(packet);
            Buffer& buffer = buffers[static_cast<std::size_t>(packet.stream)];
            buffer.Push(&packet);
            const Arrivals::Packet* due = nullptr;
            while (buffer.Pop(due)) decoder.Feed(arrivals.bytesOf(*due), due->length);
        }
        again = true;
    }
    setPerPacket(state, arrivals);
}

void registerSender(std::size_t ring, const std::string& ringName) {
    const std::string graph = "sender-graph/both/10x10/" + ringName;
    const std::string core = "sender-core/both/10x10/" + ringName;
    benchmark::RegisterBenchmark(graph.c_str(), sendByGraph, ring);
    benchmark::RegisterBenchmark(core.c_str(), sendByCore, ring);
    addTarget({graph, graph, core, 1.5});
}

void registerReceiver(std::size_t ring, const std::string& ringName) {
    const std::string core = "receiver-core/10x10/" + ringName;
    benchmark::RegisterBenchmark(core.c_str(), receiveByCore, ring);
    for (const bool oneCore : {false, true}) {
        const std::string suffix = (oneCore ? "1-core/" : "2-cores/") + ringName;
        const std::string cpu = "receiver-graph/cpu-time/" + suffix;
        const std::string rate = "receiver-graph/wall-time/" + suffix;
        benchmark::RegisterBenchmark(cpu.c_str(), receiveByGraph, ring, oneCore)->MeasureProcessCPUTime();
        benchmark::RegisterBenchmark(rate.c_str(), receiveByGraph, ring, oneCore)
            ->MeasureProcessCPUTime()
            ->UseRealTime();
        addTarget({cpu, cpu, core, 4.0});
        if (!oneCore) addTarget({rate, rate, "", 1000.0});
    }
}

}  // namespace

void registerGraphBenchmarks() {
    for (const auto& [size, name] : {std::pair{coldRing, "64MiB"}, std::pair{hotRing, "256KiB"}}) {
        registerSender(size, name);
        registerReceiver(size, name);
    }
}

}  // namespace mvrtpfec::bench
