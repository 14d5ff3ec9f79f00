#include "host/live/udp_media_input.h"

#include <array>
#include <chrono>
#include <cstring>

#include "host/io/ts_packet.h"
#include "host/net/udp_sockets.h"

namespace mvrtpfec {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t mostTransportPackets = 7;
constexpr std::uint8_t syncByte = 0x47;

/// Arrival in ticks of 90 kHz.
std::uint32_t timestampNow() {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 90000>>;
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<Ticks>(now).count());
}

bool isTransportStream(ConstRtpPacketView bytes) {
    if (bytes.length == 0 || bytes.length % tsPacketSize != 0 ||
        bytes.length > mostTransportPackets * tsPacketSize)
        return false;
    for (std::size_t at = 0; at < bytes.length; at += tsPacketSize)
        if (bytes.data[at] != syncByte) return false;
    return true;
}

/// What can't be protected, as packets with extensions, is passed on all the same.
bool isMedia(ConstRtpPacketView packet) {
    return packet.length >= rtpHeaderSize && packet.data[0] >> 6 == versionTwo >> 6 &&
           packet.payloadType() == mediaPayloadType;
}

}  // namespace

UdpMediaInput::UdpMediaInput(const asio::ip::udp::endpoint& local, Carriage carriage,
                             const MediaInputOptions& options)
    : carriage_(carriage),
      socket_(openReceiver(context_, local, options.receiving)),
      number_(options.firstNumber),
      ssrc_(options.ssrc) {}

MediaInput::Got UdpMediaInput::read(DuePacket& next) {
    if (waiting_.empty()) wait();
    if (waiting_.empty()) return Got::nothing;
    next.packet = std::move(waiting_.front());
    next.due.reset();
    waiting_.pop_front();
    return Got::packet;
}

void UdpMediaInput::wait() {
    socket_.async_wait(asio::ip::udp::socket::wait_read, [this](const asio::error_code& error) {
        if (!error) reader_.readWaiting(socket_, [this](auto datagram) { take(std::move(datagram)); });
    });
    context_.restart();
    context_.run_one_for(100ms);
    socket_.cancel();
    context_.restart();
    context_.poll();
}

void UdpMediaInput::take(std::unique_ptr<RtpPacket> datagram) {
    const ConstRtpPacketView view = datagram->view;
    if (carriage_ == Carriage::bare && isTransportStream(view))
        waiting_.push_back(wrapped(view));
    else if (carriage_ == Carriage::rtp && isMedia(view))
        waiting_.push_back(std::move(datagram));
    else
        ++leftOut_;
}

/// RFC 2250, section 2.
std::unique_ptr<RtpPacket> UdpMediaInput::wrapped(ConstRtpPacketView transportPackets) {
    auto packet = std::make_unique<RtpPacket>(RtpPacket::Unwritten{});
    std::uint8_t* const bytes = packet->view.data;
    bytes[0] = versionTwo;
    bytes[1] = mediaPayloadType;
    writeBigEndian16(bytes + 2, number_++);
    writeBigEndian32(bytes + 4, timestampNow());
    writeBigEndian32(bytes + 8, ssrc_);
    std::memcpy(bytes + rtpHeaderSize, transportPackets.data, transportPackets.length);
    packet->view.length = static_cast<std::uint16_t>(rtpHeaderSize + transportPackets.length);
    return packet;
}

}  // namespace mvrtpfec
