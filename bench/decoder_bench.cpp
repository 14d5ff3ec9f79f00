#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/packet_ring.h"
#include "bench/targets.h"
#include "core/fec_composer.h"
#include "core/fec_decoder.h"

namespace mvrtpfec::bench {

namespace {

constexpr std::int32_t side = 10;
/// Packets that a window of the matrix keeps in memory at once.
constexpr std::size_t windowSize = 2 * side * side;

/// What happens to the stream on its way to the decoder.
enum class Loss { none, onePercent, fivePercent, bursts };

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

/// Received packets one behind the other in memory, media and both FEC streams, lost ones left out.
struct Arrivals {
    struct Packet {
        std::size_t at;
        std::uint16_t length;
    };
    std::vector<std::uint8_t> bytes;
    std::vector<Packet> packets;
    std::size_t mediaCount = 0;  ///< media packets sent

    void add(ConstRtpPacketView packet) {
        packets.push_back({bytes.size(), packet.length});
        bytes.insert(bytes.end(), packet.data, packet.data + packet.length);
    }
    const std::uint8_t* prefetched(std::size_t index) const {
        const Packet& ahead = packets[(index + 4) % packets.size()];
        for (std::size_t i = 0; i < ahead.length; i += 64) __builtin_prefetch(&bytes[ahead.at + i]);
        return &bytes[packets[index].at];
    }
};

bool isLost(Loss loss, std::size_t index, std::mt19937& random) {
    switch (loss) {
        case Loss::none:
            return false;
        case Loss::onePercent:
            return random() % 100 < 1;
        case Loss::fivePercent:
            return random() % 100 < 5;
        case Loss::bursts:
            return index % 100 < 10;
    }
    return false;
}

/// One cycle of sequence numbers at most, so that every turn of the ring is a stream of its own.
Arrivals makeArrivals(const Case& c) {
    PacketRing media(c.ring);
    std::mt19937 random(7);
    Arrivals arrivals;
    arrivals.mediaCount = std::max<std::size_t>(media.count(), 10 * windowSize);
    const FecPacketSink sink = [&](const std::shared_ptr<RtpPacket>& fec) { arrivals.add(fec->view); };
    CFecComposer columns(sink, fecColumn, c.columns, c.rows);
    CFecComposer rows(sink, fecRow, c.columns, c.rows);
    for (std::size_t i = 0; i < arrivals.mediaCount; ++i) {
        const RtpPacketView packet = media.next();
        writeBigEndian16(packet.data + 2, static_cast<std::uint16_t>(i));
        if (!isLost(c.loss, i, random)) arrivals.add(packet);
        columns.protect(packet);
        rows.protect(packet);
    }
    return arrivals;
}

std::unique_ptr<CFecDecoder> freshDecoder() {
    return std::make_unique<CFecDecoder>(
        [](RtpPacket* packet) { benchmark::DoNotOptimize(packet->view.data); });
}

void setPerPacket(benchmark::State& state, const Arrivals& arrivals) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(arrivals.mediaCount));
}

void decode(benchmark::State& state, const Case& c) {
    const Arrivals arrivals = makeArrivals(c);
    for (auto _ : state) {
        auto decoder = freshDecoder();
        for (std::size_t i = 0; i < arrivals.packets.size(); ++i) {
            if (FAILED(decoder->Feed(arrivals.prefetched(i), arrivals.packets[i].length)))
                state.SkipWithError("the decoder failed");
        }
    }
    setPerPacket(state, arrivals);
}

/// What no decoder can do without: each packet copied into memory of its own, as many kept as it keeps.
void allocateAndCopy(benchmark::State& state, const Case& c) {
    const Arrivals arrivals = makeArrivals(c);
    std::vector<std::unique_ptr<std::uint8_t[]>> kept(windowSize);
    for (auto _ : state) {
        for (std::size_t i = 0; i < arrivals.packets.size(); ++i) {
            const std::uint8_t* packet = arrivals.prefetched(i);
            auto copy = std::make_unique_for_overwrite<std::uint8_t[]>(arrivals.packets[i].length);
            std::memcpy(copy.get(), packet, arrivals.packets[i].length);
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
