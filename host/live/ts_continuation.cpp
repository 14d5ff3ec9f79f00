#include "host/live/ts_continuation.h"

#include <algorithm>

#include "host/io/pes_times.h"

namespace mvrtpfec {

namespace {

constexpr std::uint8_t counterMask = 0x0f;
constexpr std::uint64_t clockTicks = 300;  // of 27 MHz in one of 90 kHz

}  // namespace

void TsContinuation::begin(std::uint64_t ticks) {
    shift_ = ticks;
    for (auto& [pid, stream] : streams_) stream.isNew = true;
}

void TsContinuation::apply(TsPacket& packet) {
    if (packet.isDamaged() || packet.pid() == nullPid) return;
    Stream& stream = streams_[packet.pid()];
    count(packet, stream);
    if (shift_ == 0)
        note(packet, stream);
    else
        shiftTimes(packet);
}

/// Packets with a payload count on; the others repeat the number.
void TsContinuation::count(TsPacket& packet, Stream& stream) const {
    const auto own = static_cast<std::uint8_t>(packet.bytes[3] & counterMask);
    if (stream.isNew && stream.counter)
        stream.counterShift =
            static_cast<std::uint8_t>(*stream.counter + (packet.hasPayload() ? 1 : 0) - own);
    stream.isNew = false;
    stream.counter = static_cast<std::uint8_t>((own + stream.counterShift) & counterMask);
    packet.bytes[3] = static_cast<std::uint8_t>((packet.bytes[3] & ~counterMask) | *stream.counter);
}

void TsContinuation::shiftTimes(TsPacket& packet) const {
    if (const auto pcr = packet.pcr())
        packet.setPcr((pcr->ticks + shift_ % pesTimeModulus * clockTicks) % pcrModulus);
    PesTimes times = pesTimes(packet);
    for (auto& time : {&times.presentation, &times.decoding})
        if (*time) (*time)->setTicks(((*time)->ticks() + shift_) % pesTimeModulus);
}

void TsContinuation::note(TsPacket& packet, Stream& stream) const {
    const PesTimes times = pesTimes(packet);
    if (!times.presentation) return;
    const std::uint64_t now = (times.decoding ? times.decoding : times.presentation)->ticks();
    if (!stream.firstTime) stream.firstTime = now;
    const std::uint64_t time = (now + pesTimeModulus - *stream.firstTime) % pesTimeModulus;
    stream.timeStep = time > stream.lastTime ? time - stream.lastTime : 0;
    stream.lastTime = time;
}

std::uint64_t TsContinuation::length() const {
    std::uint64_t longest = 0;
    for (const auto& [pid, stream] : streams_) longest = std::max(longest, stream.lastTime + stream.timeStep);
    return longest;
}

}  // namespace mvrtpfec
