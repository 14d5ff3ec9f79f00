#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/rtp_packet.h"
#include "host/net/udp_sockets.h"

namespace mvrtpfec {

/// Where repaired media go. Written on the receiver's thread, finished on another when that is done.
class MediaOutput {
public:
    virtual ~MediaOutput() = default;

    /// Throws FileError.
    virtual void write(ConstRtpPacketView media) = 0;
    virtual void finish() = 0;
    /// Datagrams that the system did not send.
    virtual std::uint64_t refused() const { return 0; }
};

/// A .ts file, "-" for standard output, "udp://ADDR:PORT" for the transport stream in bare datagrams,
/// "rtp://ADDR:PORT" for the RTP packets as they are, "null" for nowhere. Throws UsageError, FileError,
/// std::system_error.
std::unique_ptr<MediaOutput> openMediaOutput(const std::string& text, const SendingOptions& options);

}  // namespace mvrtpfec
