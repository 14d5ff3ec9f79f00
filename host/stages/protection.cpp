#include "host/stages/protection.h"

#include <utility>

#include "core/fec_packet.h"

namespace mvrtpfec {

Protection::Protection(FilterGraph& graph, const MatrixConfig& matrix, FecFormat format, Output output)
    : output_(std::move(output)),
      format_(format),
      sender_(graph, matrix, [this](StreamPort port, ConstRtpPacketView fec) { pass(port, fec); }) {}

void Protection::push(std::unique_ptr<RtpPacket> media) {
    if (!isProtectable(media->view)) {
        ++figures_.passedOver;
        return;
    }
    bridge_.note(media->view);
    sent_.note(media->view);
    sender_.push(std::move(media));
}

void Protection::pass(StreamPort port, ConstRtpPacketView fec) {
    if (!sent_.agree(fec)) {
        ++figures_.overHoles;
        return;
    }
    if (format_ == FecFormat::native) return output_(port, fec);
    RtpPacket turned(fec.data, fec.length);
    if (bridge_.toStandard(turned.view))
        output_(port, turned.view);
    else
        ++figures_.notTurned;
}

}  // namespace mvrtpfec
