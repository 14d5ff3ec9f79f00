#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

#include "core/rtp_packet.h"
#include "host/graph/moment.h"
#include "host/io/datagram.h"
#include "host/io/packet_sink.h"
#include "host/io/packet_source.h"

namespace mvrtpfec {

/// The file that a repaired stream is written to, each packet with the time and addressing of the moment
/// that set it free: where the source has got to meanwhile doesn't matter.
///
/// Written on the receiver's thread, finished on another when that is done; both throw FileError.
class RepairedOutput {
public:
    /// Throws FileError.
    RepairedOutput(const std::filesystem::path& path, std::uint16_t mediaPort, const PacketSource& source);

    void write(ConstRtpPacketView packet, const Moment& moment);
    void finish() { sink_->finish(); }

private:
    std::shared_ptr<FrameTemplate> addressing_;
    std::unique_ptr<PacketSink> sink_;
    Datagram datagram_;
};

}  // namespace mvrtpfec
