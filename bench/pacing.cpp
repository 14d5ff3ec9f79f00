#include "bench/pacing.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <map>
#include <thread>
#include <vector>

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>

#include "bench/picture_source.h"
#include "host/stream/steady_clock.h"
#include "host/stream/udp_output.h"
#include "rtp_media/send/rtp_scheduler.h"

namespace mvrtpfec::bench {

namespace {

using Udp = asio::ip::udp;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::size_t payloadSize = 1300;
constexpr std::int64_t bitsPerSecond = 20'000'000;
constexpr REFERENCE_TIME second = 10'000'000;
constexpr std::size_t packets = 3 * bitsPerSecond / (8 * payloadSize);
/// Packets closer together than this are one burst.
constexpr Milliseconds together{1.0};

using Arrivals = std::vector<Clock::time_point>;

/// Takes the packets until all have come or nothing does for a second.
Arrivals receiveAll(Udp::socket& socket) {
    Arrivals arrivals;
    std::array<std::uint8_t, 1500> buffer;
    auto last = Clock::now() + std::chrono::seconds(3);
    while (arrivals.size() < packets && Clock::now() - last < std::chrono::seconds(1)) {
        asio::error_code error;
        socket.receive(asio::buffer(buffer), 0, error);
        if (error == asio::error::would_block) {
            std::this_thread::sleep_for(std::chrono::microseconds(20));
            continue;
        }
        last = Clock::now();
        arrivals.push_back(last);
    }
    return arrivals;
}

Arrivals sendAndReceive() {
    asio::io_context context;
    Udp::socket socket(context, Udp::endpoint(asio::ip::address_v4::loopback(), 0));
    socket.set_option(asio::socket_base::receive_buffer_size(1 << 20));
    socket.non_blocking(true);
    Udp::socket reportSocket(context, Udp::endpoint(asio::ip::address_v4::loopback(), 0));
    UdpOutput media(context, socket.local_endpoint());
    UdpOutput reports(context, reportSocket.local_endpoint());
    SteadyClock clock;
    PictureSource source(payloadSize);
    RTPScheduler scheduler(&clock, {});
    scheduler.addStream(1, StreamType::mpeg4Visual, 5000, 96, &media, &reports, &source, 0,
                        ParameterSetMode::sdp);
    const REFERENCE_TIME start = SteadyClock::now() - 2 * second + second / 5;
    for (std::size_t i = 0; i < packets; ++i)
        source.give(start + static_cast<REFERENCE_TIME>(i * payloadSize * 8) * second / bitsPerSecond);
    Arrivals arrivals;
    std::thread receiver([&] { arrivals = receiveAll(socket); });
    scheduler.run();
    scheduler.drain();
    receiver.join();
    return arrivals;
}

struct Bin {
    double below;  ///< ms; the last one is open
    const char* name;
    std::size_t count = 0;
};

void printLine(const char* name, std::size_t count, std::size_t all) {
    constexpr std::size_t width = 50;
    const std::size_t length = all == 0 ? 0 : (count * width + all - 1) / all;
    std::printf("  %-14s %6zu  %s\n", name, count, std::string(length, '#').c_str());
}

void printGaps(const Arrivals& arrivals) {
    std::array<Bin, 7> bins{{{0.1, "under 0.1 ms"},
                             {1, "0.1 to 1 ms"},
                             {10, "1 to 10 ms"},
                             {14, "10 to 14 ms"},
                             {16, "14 to 16 ms"},
                             {20, "16 to 20 ms"},
                             {1e9, "20 ms and more"}}};
    for (std::size_t i = 1; i < arrivals.size(); ++i) {
        const double gap = Milliseconds(arrivals[i] - arrivals[i - 1]).count();
        ++std::find_if(bins.begin(), bins.end(), [=](const Bin& bin) { return gap < bin.below; })->count;
    }
    std::printf("Between packets:\n");
    for (const Bin& bin : bins) printLine(bin.name, bin.count, arrivals.size() - 1);
}

void printBursts(const Arrivals& arrivals) {
    constexpr std::size_t step = 5;
    std::map<std::size_t, std::size_t> bursts;
    std::size_t size = 1;
    std::size_t all = 0;
    for (std::size_t i = 1; i <= arrivals.size(); ++i) {
        if (i < arrivals.size() && arrivals[i] - arrivals[i - 1] < together) {
            ++size;
            continue;
        }
        ++bursts[size / step];
        ++all;
        size = 1;
    }
    std::printf("Packets in a burst (less than %.0f ms apart):\n", together.count());
    for (const auto& [bin, count] : bursts)
        printLine((std::to_string(bin * step) + " to " + std::to_string(bin * step + step - 1)).c_str(),
                  count, all);
}

}  // namespace

void printPacing() {
    const Arrivals arrivals = sendAndReceive();
    std::printf("\nPacing of %.0f Mbit/s in packets of %zu bytes on this machine, %zu of %zu received\n",
                static_cast<double>(bitsPerSecond) / 1e6, payloadSize, arrivals.size(), packets);
    if (arrivals.size() < 2) return;
    printGaps(arrivals);
    printBursts(arrivals);
}

}  // namespace mvrtpfec::bench
