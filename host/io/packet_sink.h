#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

#include "host/io/datagram.h"
#include "host/io/frame_template.h"

namespace mvrtpfec {

/// Where the packets of a stream go. One thread. A sink destroyed without finish() leaves no file
/// behind, and one that was there before as it was; a device or pipe keeps what it has been given.
class PacketSink {
public:
    virtual ~PacketSink() = default;

    /// Throws FileError when it cannot be written (a full disk, a closed pipe).
    virtual void write(const Datagram& datagram) = 0;

    /// Makes the file appear under its name. Once, as the last call. Throws FileError.
    virtual void finish() = 0;
};

/// Opens a .ts, .pcap or .pcapng file for writing. A capture takes a datagram's own frame as it is,
/// and builds one from `addressing` for a datagram without: that of the source which feeds the sink.
/// A .ts file takes media only. Throws FileError.
std::unique_ptr<PacketSink> openSink(const std::filesystem::path& path, std::uint16_t mediaPort,
                                     std::shared_ptr<const FrameTemplate> addressing);

}  // namespace mvrtpfec
