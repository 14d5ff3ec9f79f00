#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include <benchmark/benchmark.h>

#include "bench/packet_ring.h"
#include "bench/targets.h"
#include "core/reorder_buffer.h"

namespace mvrtpfec::bench {

namespace {

/// The receiver's buffer holds references to samples; a pointer to the packet's bytes costs as little.
using Item = const std::uint8_t*;

CRtpPacketReorderBuffer<Item> makeBuffer() {
    return {20, 65535, [](Item packet) -> std::int32_t { return readBigEndian16(packet + 2); }};
}

/// Numbers in order, or with each pair swapped.
void reorder(benchmark::State& state, bool swapped) {
    PacketRing ring(hotRing);
    auto buffer = makeBuffer();
    std::uint16_t number = 0;
    Item due = nullptr;
    for (auto _ : state) {
        const RtpPacketView packet = ring.nextUnasked();
        writeBigEndian16(packet.data + 2, swapped ? number ^ 1u : number);
        ++number;
        buffer.Push(packet.data);
        while (buffer.Pop(due)) benchmark::DoNotOptimize(due);
    }
}

void copyPacket(benchmark::State& state) {
    PacketRing ring(hotRing);
    const auto copy = std::make_unique<std::uint8_t[]>(mediaSize);
    for (auto _ : state) {
        const RtpPacketView packet = ring.next();
        std::memcpy(copy.get(), packet.data, packet.length);
        benchmark::ClobberMemory();
    }
}

}  // namespace

void registerReorderBenchmarks() {
    benchmark::RegisterBenchmark("reorder/in-order", reorder, false);
    benchmark::RegisterBenchmark("reorder/swapped", reorder, true);
    benchmark::RegisterBenchmark("copy-packet", copyPacket);
    addTarget({"reorder/in-order", "reorder/in-order", "copy-packet", 0.5});
}

}  // namespace mvrtpfec::bench
