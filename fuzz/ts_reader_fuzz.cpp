// Any bytes as a transport stream file, and in datagrams. Input: a byte for their size, the stream.

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <span>
#include <vector>

#include <stdio.h>

#include "host/io/ts_reader.h"
#include "host/live/ts_wrapper.h"

namespace {

using namespace mvrtpfec;
using Bytes = std::span<const std::uint8_t>;

void require(bool condition) {
    if (!condition) std::abort();
}

/// Every byte is in a packet, between packets in step, or counted as skipped.
void requireAll(std::uint64_t size, std::uint64_t packets, std::uint64_t skipped) {
    require(packets * tsPacketSize + skipped <= size);
    require(size <= packets * 204 + 4 + skipped);
}

void readFile(Bytes bytes) {
    std::vector<std::uint8_t> copy(bytes.begin(), bytes.end());
    std::FILE* stream = fmemopen(copy.data(), copy.size(), "rb");
    if (stream == nullptr) return;
    try {
        TsReader reader(InputFile(stream, "fuzz.ts"));
        std::uint64_t packets = 0;
        for (; const auto packet = reader.next(); ++packets) require(packet->hasSync());
        require(!reader.isBroken());
        requireAll(bytes.size(), packets, reader.skipped()->total());
        require(reader.skipped()->takeNotices().size() <= 11);
    } catch (const FileError&) {
        // What is no transport stream.
    }
}

void readDatagrams(Bytes bytes, std::size_t size) {
    std::uint64_t packets = 0;
    TsWrapper wrapper(
        1, 0, [](std::uint64_t, std::uint64_t) {},
        [&](std::unique_ptr<RtpPacket> packet) {
            require(packet->isValid() && packet->view.payloadLength() % tsPacketSize == 0);
            packets += packet->view.payloadLength() / tsPacketSize;
        });
    for (std::size_t at = 0; at < bytes.size(); at += size)
        wrapper.push(bytes.subspan(at, std::min(size, bytes.size() - at)), {});
    wrapper.passTime(SteadyTime::max());
    require(packets * tsPacketSize <= bytes.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const Bytes bytes(data + 1, size - 1);
    readFile(bytes);
    readDatagrams(bytes, std::size_t{data[0]} * 8 + 1);
    return 0;
}
