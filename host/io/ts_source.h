#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "host/io/file_error.h"
#include "host/io/input_file.h"
#include "host/io/packet_source.h"
#include "host/io/pcr_clock.h"
#include "host/io/ts_packet.h"

namespace mvrtpfec {

/// Packs a transport stream file into RTP packets (RFC 2250): payload type 33, seven transport packets
/// each (the last one may hold fewer), sequence numbers from 0, a fixed SSRC, timestamps of 90 kHz.
///
/// The timestamp is the program clock at the packet's first byte, after the first PID that carries
/// one; another PID takes over when that one falls silent for the length of the read-ahead. The span
/// before the first clock reference and after the last one have the rate of their neighbour. A stream
/// without any clock gets a packet every 150 us (10 Mbit/s) from 0 on. Up to 8192 packets (1.5 MB) are read
/// ahead to see the next reference: it has to come within 100 ms, which this covers up to 123 Mbit/s.
///
/// Every packet must start with the sync byte; a stream that has lost its 188-byte step is an error
/// that names the place, so that no damaged stream passes for a whole one.
class TsSource : public PacketSource {
public:
    /// Throws FileError when the file is no transport stream.
    explicit TsSource(InputFile file);

    bool read(Datagram& datagram) override;
    double progress() const override { return file_.progress(file_.stream()); }

private:
    bool readAhead(std::uint64_t count);
    void readPacket();
    void breakOff(const std::string& reason);
    void writeHeader(Datagram& datagram);
    std::optional<Pcr> pcrOf(std::uint64_t index) const;
    PcrClock startClock();
    void startSpan();

    InputFile file_;
    std::deque<TsPacket> ahead_;
    std::uint64_t offset_ = 0;         ///< in the file, of what is read next
    std::optional<FileError> broken_;  ///< thrown once the packets before the broken place are delivered
    bool atEnd_ = false;

    std::optional<std::uint16_t> pcrPid_;
    std::optional<PcrClock> clock_;
    std::uint64_t spanLength_ = 0;
    std::uint64_t spanIndex_ = 0;  ///< of the next packet to deliver
    std::uint16_t sequenceNumber_ = 0;
};

}  // namespace mvrtpfec
