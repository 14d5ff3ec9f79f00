#include "host/live/ts_wrapper.h"

#include <algorithm>
#include <utility>

namespace mvrtpfec {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t mostPackets = 7;
constexpr std::size_t fullSize = rtpHeaderSize + mostPackets * tsPacketSize;
constexpr auto longestWait = 100ms;

/// In 90 kHz.
std::uint32_t timestampOf(SteadyTime time) {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 90000>>;
    return static_cast<std::uint32_t>(std::chrono::duration_cast<Ticks>(time.time_since_epoch()).count());
}

/// One to seven of them and nothing else.
bool isWholePackets(std::span<const std::uint8_t> bytes) {
    if (bytes.empty() || bytes.size() % tsPacketSize != 0 || bytes.size() > mostPackets * tsPacketSize)
        return false;
    for (std::size_t at = 0; at < bytes.size(); at += tsPacketSize)
        if (bytes[at] != tsSyncByte) return false;
    return true;
}

}  // namespace

TsWrapper::TsWrapper(std::uint32_t ssrc, std::uint16_t firstNumber, TsFramer::OnSkipped onSkipped,
                     Output output)
    : framer_(std::move(onSkipped), TsFramer::Pieces::someMissing),
      output_(std::move(output)),
      ssrc_(ssrc),
      number_(firstNumber) {}

bool TsWrapper::push(std::span<const std::uint8_t> datagram, SteadyTime now) {
    if (isBetweenPackets() && group_ == nullptr && isWholePackets(datagram)) {
        begin(now);
        append(datagram);
        sendGroup();
        return true;
    }
    framer_.push(datagram);
    while (const auto packet = framer_.next()) add(*packet, now);
    return framer_.distance() != 0;
}

void TsWrapper::passTime(SteadyTime now) {
    if (group_ != nullptr && now - begun_ >= longestWait) sendGroup();
}

void TsWrapper::add(const TsPacket& packet, SteadyTime now) {
    if (group_ == nullptr) begin(now);
    append(packet.bytes);
    if (group_->view.length == fullSize) sendGroup();
}

void TsWrapper::begin(SteadyTime now) {
    group_ = std::make_unique<RtpPacket>(RtpPacket::Unwritten{});
    begun_ = now;
    std::uint8_t* const bytes = group_->view.data;
    bytes[0] = versionTwo;
    bytes[1] = mediaPayloadType;
    writeBigEndian16(bytes + 2, number_++);
    writeBigEndian32(bytes + 4, timestampOf(now));
    writeBigEndian32(bytes + 8, ssrc_);
    group_->view.length = rtpHeaderSize;
}

void TsWrapper::append(std::span<const std::uint8_t> bytes) {
    std::ranges::copy(bytes, group_->view.data + group_->view.length);
    group_->view.length = static_cast<std::uint16_t>(group_->view.length + bytes.size());
}

void TsWrapper::sendGroup() {
    output_(std::exchange(group_, nullptr));
}

}  // namespace mvrtpfec
