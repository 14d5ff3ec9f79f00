#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "host/io/datagram.h"
#include "host/io/frame_template.h"
#include "host/io/skipped_bytes.h"

namespace mvrtpfec {

/// Where the packets of a stream come from, one by one in file order; what is kept in memory does not
/// grow with the file. One thread.
class PacketSource {
public:
    virtual ~PacketSource() = default;

    /// Replaces `datagram` by the next one; its vectors are reused. False at the end, and where a capture
    /// can't be read on. Throws FileError.
    virtual bool read(Datagram& datagram) = 0;

    /// "broken behind packet 1234, at byte 567890: why" when that is where reading ended; else empty.
    const std::string& breakage() const { return breakage_; }

    /// Share of the file that has been read, 0 to 1; 0 when its size is not known (a pipe).
    virtual double progress() const = 0;

    /// Datagrams of the stream left out because the capture does not hold them whole.
    virtual std::uint64_t cutDatagrams() const { return 0; }

    /// What of a transport stream had to be passed over; null for other sources.
    virtual SkippedBytes* skipped() { return nullptr; }

    /// How this stream is addressed: follows the latest media frame read, so that frames built
    /// between two reads look like it.
    std::shared_ptr<const FrameTemplate> addressing() const { return addressing_; }

protected:
    std::shared_ptr<FrameTemplate> addressing_ = std::make_shared<FrameTemplate>(LinkType::ethernet);
    std::string breakage_;
};

/// Opens a .ts, .pcap or .pcapng file. UDP datagrams to the ports P, P + 2 and P + 4 belong to the
/// stream, P being `mediaPort` (at most 65531). Throws FileError.
std::unique_ptr<PacketSource> openSource(const std::filesystem::path& path, std::uint16_t mediaPort);

}  // namespace mvrtpfec
