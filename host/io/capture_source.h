#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include <pcap/pcap.h>

#include "host/io/input_file.h"
#include "host/io/packet_source.h"

namespace mvrtpfec {

/// Reads a pcap or pcapng capture through libpcap and picks the stream's datagrams out of it.
/// Frames of anything else, and fragments, are left out.
class CaptureSource : public PacketSource {
public:
    /// Throws FileError when it is no capture, or one of a link type that is not understood.
    CaptureSource(InputFile file, std::uint16_t mediaPort);

    bool read(Datagram& datagram) override;
    double progress() const override;
    std::uint64_t cutDatagrams() const override { return cutDatagrams_; }

private:
    struct Closer {
        void operator()(pcap_t* capture) const { pcap_close(capture); }
    };
    using Capture = std::unique_ptr<pcap_t, Closer>;

    static Capture open(InputFile& file);
    void noteBreak();
    bool take(const pcap_pkthdr& header, std::span<const std::uint8_t> frame, Datagram& datagram);

    InputFile file_;
    Capture capture_;
    std::uint16_t mediaPort_;
    std::uint64_t frames_ = 0;  ///< read, of any kind
    std::uint64_t cutDatagrams_ = 0;
};

}  // namespace mvrtpfec
