#include "host/io/ts_bit_rate.h"

#include "host/io/ts_reader.h"

namespace mvrtpfec {

std::uint64_t readTsBitRate(const std::filesystem::path& path) {
    constexpr std::uint64_t mostPackets = 1'000'000;
    constexpr double bitsOfPacket = 8.0 * tsPacketSize;
    TsReader reader{InputFile(path)};
    std::uint64_t packets = 0;
    std::uint64_t clocks = 0;
    double seconds = 0;
    while (packets < mostPackets) {
        const auto packet = reader.next();
        if (!packet) break;
        ++packets;
        if (packet->pcr()) ++clocks;
        seconds = std::chrono::duration<double>(packet->elapsed).count();
    }
    if (packets == 0) reader.throwIfBroken();
    if (clocks < 2 || seconds <= 0)
        throw FileError(path, "no clock references to tell its bit rate by; --bitrate tells it");
    return static_cast<std::uint64_t>(static_cast<double>(packets - 1) * bitsOfPacket / seconds);
}

}  // namespace mvrtpfec
