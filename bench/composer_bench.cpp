#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/packet_ring.h"
#include "bench/targets.h"
#include "core/fec_composer.h"
#include "core/xor_bytes.h"

namespace mvrtpfec::bench {

namespace {

struct Case {
    FecMode mode;
    const char* modeName;
    std::int32_t columns;
    std::int32_t rows;
    std::size_t ring;
    const char* ringName;

    std::string name(const char* what) const {
        return std::string(what) + "/" + modeName + "/" + std::to_string(columns) + "x" +
               std::to_string(rows) + "/" + ringName;
    }
};

void compose(benchmark::State& state, const Case& c) {
    PacketRing ring(c.ring);
    CFecComposer composer(
        [](const std::shared_ptr<RtpPacket>& packet) { benchmark::DoNotOptimize(packet.get()); }, c.mode,
        c.columns, c.rows);
    for (auto _ : state) composer.protect(ring.next());
}

/// An accumulator lies as the payload of an FEC packet does.
struct alignas(16) Accumulator {
    std::array<std::uint8_t, payloadSize> bytes{};
};

/// What no composer can do without: the payload XORed into the row's and the column's accumulator, in
/// one pass, with the core's own loop.
void bareXor(benchmark::State& state, const Case& c) {
    PacketRing ring(c.ring);
    Accumulator row;
    std::vector<Accumulator> columns(static_cast<std::size_t>(c.columns));
    std::size_t column = 0;
    for (auto _ : state) {
        const RtpPacketView media = ring.next();
        std::uint8_t* down = columns[column].bytes.data();
        if (c.mode == fecBoth)
            xorBytes(row.bytes.data(), down, media.payload(), media.payloadLength());
        else
            xorBytes(c.mode == fecRow ? row.bytes.data() : down, media.payload(), media.payloadLength());
        if (++column == columns.size()) column = 0;
        benchmark::ClobberMemory();
    }
}

void registerCase(const Case& c) {
    benchmark::RegisterBenchmark(c.name("composer").c_str(), compose, c);
    benchmark::RegisterBenchmark(c.name("bare-xor").c_str(), bareXor, c);
    if (c.mode == fecBoth) addTarget({c.name("composer"), c.name("composer"), c.name("bare-xor"), 1.3});
}

}  // namespace

void registerComposerBenchmarks() {
    for (const auto& [size, ringName] : {std::pair{coldRing, "64MiB"}, std::pair{hotRing, "256KiB"}}) {
        for (const auto& [columns, rows] : {std::pair{5, 5}, std::pair{10, 10}, std::pair{20, 5}}) {
            registerCase({fecRow, "row", columns, rows, size, ringName});
            registerCase({fecColumn, "column", columns, rows, size, ringName});
            registerCase({fecBoth, "both", columns, rows, size, ringName});
        }
    }
}

}  // namespace mvrtpfec::bench
