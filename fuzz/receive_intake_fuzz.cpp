// What a live receiver does with datagrams before they reach the graph: counts them, makes their FEC packets
// ours, puts them in order and keeps account of them. Input: records of a byte, the next packet's length, and
// the packet; a record of one length byte 0 is time that passes.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <span>
#include <vector>

#include "guard/packet_ledger.h"
#include "host/interop/fec_intake.h"
#include "host/live/reception_meter.h"
#include "mvrtpfec/receiver_guard.h"
#include "support/log/dummy_log_perf.h"

using namespace mvrtpfec;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace std::chrono_literals;
    std::span<const std::uint8_t> rest(data, size);
    mvn::log::DummyLogPerf log;
    FecIntake intake(std::nullopt, log);
    const auto meter = std::make_unique<ReceptionMeter>();
    PacketLedger ledger(0);
    std::uint64_t valid = 0;
    std::uint64_t came = 0;
    SteadyTime now{};
    ReceiverGuard guard(
        [&](ReceiverInput, std::span<const std::uint8_t> packet) {
            if (packet.size() < rtpHeaderSize) std::abort();
            const ConstRtpPacketView media{packet.data(), static_cast<std::uint16_t>(packet.size())};
            meter->deliver(media, now);
            if (media.payloadType() == mediaPayloadType) ledger.deliver(media, came);
        },
        {.window = 5, .patience = 20ms, .startHold = 10});
    while (!rest.empty()) {
        const std::size_t length = std::min<std::size_t>(rest.front(), rest.size() - 1);
        std::vector<std::uint8_t> bytes(rest.begin() + 1,
                                        rest.begin() + 1 + static_cast<std::ptrdiff_t>(length));
        rest = rest.subspan(1 + length);
        now += 5ms;
        guard.passTime(now);
        const RtpPacketView packet{bytes.data(), static_cast<std::uint16_t>(bytes.size())};
        if (!meter->arrive(packet, now)) continue;
        ++valid;
        if (!intake.take(packet)) continue;
        if (packet.payloadType() == mediaPayloadType)
            came = ledger.arrive(packet);
        else
            ledger.name(packet);
        guard.push(bytes);
    }
    guard.flush();
    ledger.finish();
    if (ledger.figures().longestBurst > ledger.figures().lost()) std::abort();
    const ReceptionFigures figures = meter->figures();
    if (figures.media + figures.fec.packets != valid) std::abort();
    return 0;
}
