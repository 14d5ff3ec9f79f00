#include "mvrtpfec/receiver_guard.h"

#include <utility>

#include "guard/packet_guard.h"

namespace mvrtpfec {

struct ReceiverGuard::Inside {
    Inside(Output output, const GuardSettings& settings)
        : guard(
              [output = std::move(output)](ReceiverInput input, const std::unique_ptr<RtpPacket>& packet) {
                  output(input, {packet->view.data, packet->view.length});
              },
              settings) {}

    PacketGuard guard;
    std::uint64_t tooLong = 0;  ///< datagrams; no input takes them
};

ReceiverGuard::ReceiverGuard(Output output, const GuardSettings& settings)
    : inside_(std::make_unique<Inside>(std::move(output), settings)) {}

ReceiverGuard::~ReceiverGuard() = default;

void ReceiverGuard::push(std::span<const std::uint8_t> datagram) {
    if (datagram.size() > maxFecPacketSize)
        ++inside_->tooLong;
    else
        inside_->guard.push(std::make_unique<RtpPacket>(datagram.data(), datagram.size()));
}

void ReceiverGuard::passTime(std::chrono::steady_clock::time_point now) {
    inside_->guard.passTime(now);
}

void ReceiverGuard::flush() {
    inside_->guard.flush();
}

GuardFigures ReceiverGuard::figures() const {
    GuardFigures figures = inside_->guard.figures();
    figures.foreign += inside_->tooLong;
    return figures;
}

}  // namespace mvrtpfec
