#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/arrivals.h"
#include "bench/packet_ring.h"
#include "bench/targets.h"
#include "core/fec_decoder.h"

namespace mvrtpfec::bench {

namespace {

constexpr std::int32_t side = 10;
/// Packets that a window of the matrix keeps in memory at once.
constexpr std::size_t windowSize = 2 * side * side;

struct Case {
    std::int32_t columns;
    std::int32_t rows;
    Loss loss;
    std::size_t ring;

    std::string name(const char* what) const {
        constexpr const char* losses[] = {"lossless", "1%", "5%", "10-in-100"};
        return std::string(what) + "/" + std::to_string(columns) + "x" + std::to_string(rows) + "/" +
               losses[static_cast<std::size_t>(loss)] + (ring == coldRing ? "/64MiB" : "/256KiB");
    }
};

Arrivals makeArrivals(const Case& c) {
    return Arrivals(c.columns, c.rows, c.loss, c.ring);
}

std::unique_ptr<CFecDecoder> freshDecoder() {
    return std::make_unique<CFecDecoder>(
        [](RtpPacket* packet) { benchmark::DoNotOptimize(packet->view.data); });
}

void setPerPacket(benchmark::State& state, const Arrivals& arrivals) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(arrivals.mediaCount()));
}

void decode(benchmark::State& state, const Case& c) {
    Arrivals arrivals = makeArrivals(c);
    for (auto _ : state) {
        auto decoder = freshDecoder();
        for (std::size_t i = 0; i < arrivals.packets().size(); ++i) {
            if (FAILED(decoder->Feed(arrivals.prefetched(i), arrivals.packets()[i].length)))
                state.SkipWithError("the decoder failed");
        }
    }
    setPerPacket(state, arrivals);
}

/// What no decoder can do without: each packet copied into memory of its own, as many kept as it keeps.
void allocateAndCopy(benchmark::State& state, const Case& c) {
    Arrivals arrivals = makeArrivals(c);
    std::vector<std::unique_ptr<std::uint8_t[]>> kept(windowSize);
    for (auto _ : state) {
        for (std::size_t i = 0; i < arrivals.packets().size(); ++i) {
            const std::uint8_t* packet = arrivals.prefetched(i);
            auto copy = std::make_unique_for_overwrite<std::uint8_t[]>(arrivals.packets()[i].length);
            std::memcpy(copy.get(), packet, arrivals.packets()[i].length);
            kept[i % windowSize] = std::move(copy);
        }
    }
    setPerPacket(state, arrivals);
}

}  // namespace

void registerDecoderBenchmarks() {
    for (const std::size_t ring : {coldRing, hotRing}) {
        const Case lossless{side, side, Loss::none, ring};
        benchmark::RegisterBenchmark(lossless.name("allocate-copy").c_str(), allocateAndCopy, lossless);
        for (const Loss loss : {Loss::none, Loss::onePercent, Loss::fivePercent, Loss::bursts}) {
            const Case c{side, side, loss, ring};
            benchmark::RegisterBenchmark(c.name("decoder").c_str(), decode, c);
            if (loss == Loss::none)
                addTarget({c.name("decoder"), c.name("decoder"), c.name("allocate-copy"), 2.0});
            else
                addTarget({c.name("decoder"), c.name("decoder"), lossless.name("decoder"), 2.0});
        }
    }
}

}  // namespace mvrtpfec::bench
