#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "host/io/packet_source.h"
#include "host/io/ts_reader.h"

namespace mvrtpfec {

/// Packs a transport stream file into RTP packets (RFC 2250): payload type 33, seven transport packets
/// each (the last one may hold fewer), sequence numbers from 0, a fixed SSRC, timestamps of 90 kHz: the
/// program clock at the packet's first byte, as TsReader has it.
class TsSource : public PacketSource {
public:
    /// Throws FileError when the file is no transport stream.
    explicit TsSource(InputFile file) : TsSource(std::make_unique<TsReader>(std::move(file))) {}
    explicit TsSource(std::unique_ptr<TimedTsPackets> packets) : packets_(std::move(packets)) {}

    bool read(Datagram& datagram) override;
    double progress() const override { return packets_->progress(); }
    SkippedBytes* skipped() override { return packets_->skipped(); }

private:
    void writeHeader(Datagram& datagram, const TimedTsPacket& first);

    std::unique_ptr<TimedTsPackets> packets_;
    std::uint16_t sequenceNumber_ = 0;
};

}  // namespace mvrtpfec
