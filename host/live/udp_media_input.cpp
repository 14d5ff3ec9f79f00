#include "host/live/udp_media_input.h"

#include <chrono>

#include <fmt/format.h>

#include "host/net/udp_sockets.h"

namespace mvrtpfec {

namespace {

using namespace std::chrono_literals;

SteadyTime timeNow() {
    return std::chrono::steady_clock::now();
}

bool hasRtpHeader(std::span<const std::uint8_t> datagram) {
    return datagram.size() >= rtpHeaderSize && datagram[0] >> 6 == versionTwo >> 6;
}

/// Why this isn't media in RTP; empty where it is. What can't be protected, as packets with extensions, is
/// passed on all the same.
std::string faultOf(std::span<const std::uint8_t> datagram) {
    if (!hasRtpHeader(datagram))
        return transportPacketDistance(datagram) == 0
                   ? "they are no RTP packets"
                   : "a transport stream without RTP headers is to be named udp://ADDR:PORT";
    const unsigned payloadType = datagram[1] & payloadTypeBits;
    if (payloadType != mediaPayloadType)
        return fmt::format("the payload type is {}, not {}", payloadType, mediaPayloadType);
    if (datagram.size() > maxFecPacketSize) return fmt::format("longer than {} bytes", maxFecPacketSize);
    return "";
}

}  // namespace

UdpMediaInput::UdpMediaInput(const std::string& name, const asio::ip::udp::endpoint& local, Carriage carriage,
                             const MediaInputOptions& options)
    : carriage_(carriage),
      socket_(openReceiver(context_, local, options.receiving)),
      watch_(name, timeNow()),
      wrapper_(
          options.ssrc, options.firstNumber,
          [this](std::uint64_t, std::uint64_t count) { watch_.skip(count, timeNow()); },
          [this](auto packet) { waiting_.push_back(std::move(packet)); }) {}

MediaInput::Got UdpMediaInput::read(DuePacket& next) {
    if (waiting_.empty()) wait();
    if (waiting_.empty()) wrapper_.passTime(timeNow());
    if (waiting_.empty()) return Got::nothing;
    next.packet = std::move(waiting_.front());
    next.due.reset();
    waiting_.pop_front();
    return Got::packet;
}

std::vector<std::string> UdpMediaInput::takeNotices() {
    return watch_.takeNotices(timeNow());
}

void UdpMediaInput::wait() {
    socket_.async_wait(asio::ip::udp::socket::wait_read, [this](const asio::error_code& error) {
        if (!error) reader_.readWaiting(socket_, [this](Datagram datagram) { take(datagram); });
    });
    context_.restart();
    context_.run_one_for(100ms);
    socket_.cancel();
    context_.restart();
    context_.poll();
}

void UdpMediaInput::take(Datagram datagram) {
    const SteadyTime now = timeNow();
    if (carriage_ == Carriage::bare)
        takeBare(datagram, now);
    else
        takeRtp(datagram, now);
}

/// In a stream that runs across datagrams anything may look like a header.
bool UdpMediaInput::isRtp(Datagram datagram) const {
    return wrapper_.isBetweenPackets() && hasRtpHeader(datagram) &&
           datagram.size() % tsPacketSize == rtpHeaderSize &&
           transportPacketDistance(datagram.subspan(rtpHeaderSize)) != 0;
}

void UdpMediaInput::takeBare(Datagram datagram, SteadyTime now) {
    if (isRtp(datagram))
        watch_.leaveOut("RTP packets are to be named rtp://ADDR:PORT", now);
    else if (wrapper_.push(datagram, now))
        watch_.use();
    else
        watch_.doubt(now);
}

void UdpMediaInput::takeRtp(Datagram datagram, SteadyTime now) {
    const std::string fault = faultOf(datagram);
    if (!fault.empty()) return watch_.leaveOut(fault, now);
    watch_.use();
    waiting_.push_back(std::make_unique<RtpPacket>(datagram.data(), datagram.size()));
}

}  // namespace mvrtpfec
