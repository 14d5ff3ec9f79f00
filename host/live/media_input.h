#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/rtp_packet.h"
#include "host/io/own_ssrc.h"
#include "host/live/clock.h"
#include "host/net/udp_sockets.h"

namespace mvrtpfec {

/// A media packet and when it is to leave: at once where nothing is said.
struct DuePacket {
    std::unique_ptr<RtpPacket> packet;
    std::optional<SteadyTime> due;
};

struct MediaInputOptions {
    std::optional<std::uint64_t> bitRate;  ///< of the transport stream, bits per second; else by its clock
    bool loop = false;                     ///< files: begin anew at the end
    ReceivingOptions receiving;            ///< of what comes over the network
    // Of streams that bring no RTP headers.
    std::uint32_t ssrc = ownSsrc;
    std::uint16_t firstNumber = 0;
};

/// Where the media to send come from. One thread.
class MediaInput {
public:
    enum class Got { packet, nothing, end };

    virtual ~MediaInput() = default;

    /// Waits for the next packet, a tenth of a second at most. Throws FileError, std::system_error.
    virtual Got read(DuePacket& next) = 0;
    /// Whether read() has nothing at hand.
    virtual bool wouldWait() const = 0;
    /// What came and was no media.
    virtual std::uint64_t leftOut() const { return 0; }
    /// Bytes of a transport stream that belong to no packet.
    virtual std::uint64_t skippedBytes() = 0;
    /// What a person should know, since asked last; each is one line. Seldom any, and never many.
    virtual std::vector<std::string> takeNotices() = 0;
};

/// "udp://ADDR:PORT" for a transport stream in bare datagrams of any size, "rtp://ADDR:PORT" for one in RTP
/// packets, which keep their numbers and timestamps, "-" for a transport stream on standard input, else a .ts
/// file. Throws UsageError, FileError, std::system_error.
std::unique_ptr<MediaInput> openMediaInput(const std::string& text, const MediaInputOptions& options);

}  // namespace mvrtpfec
