#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "host/io/file_error.h"
#include "host/io/input_file.h"
#include "host/io/pcr_clock.h"
#include "host/io/skipped_bytes.h"
#include "host/io/ts_framer.h"
#include "host/io/ts_packet.h"

namespace mvrtpfec {

/// One packet of a transport stream and when it is due.
struct TimedTsPacket : TsPacket {
    std::uint32_t rtpTimestamp;        ///< its clock in 90 kHz, modulo 2^32
    std::chrono::nanoseconds elapsed;  ///< since the first packet
};

/// Packets of a transport stream in order.
class TimedTsPackets {
public:
    virtual ~TimedTsPackets() = default;

    /// None at the end, and where it could not be read further.
    virtual std::optional<TimedTsPacket> next() = 0;
    /// Throws FileError when that was no proper end.
    virtual void throwIfBroken() const = 0;
    /// Share of it that has been read, 0 to 1; 0 when that is not known.
    virtual double progress() const = 0;
    /// What had to be passed over.
    virtual SkippedBytes* skipped() = 0;
};

/// Reads a transport stream file packet by packet and times each by the program clock.
///
/// The clock is that of the first PID that carries one; another PID takes over when that one falls silent for
/// the length of the read-ahead. The span before the first clock reference and after the last one have the
/// rate of their neighbour. A stream without any clock gets a packet every 150 us (10 Mbit/s) from 0 on. Up
/// to 8192 packets (1.5 MB) are read ahead to see the next reference: it has to come within 100 ms, which
/// this covers up to 123 Mbit/s.
///
/// Bytes that belong to no packet, of which TsFramer decides, are passed over and counted.
class TsReader final : public TimedTsPackets {
public:
    /// Throws FileError when the file is no transport stream.
    explicit TsReader(InputFile file);
    /// The same, with what is skipped added to `skipped`.
    TsReader(InputFile file, std::shared_ptr<SkippedBytes> skipped);

    std::optional<TimedTsPacket> next() override;
    void throwIfBroken() const override;
    double progress() const override { return file_.progress(file_.stream()); }
    SkippedBytes* skipped() override { return skipped_.get(); }
    bool isBroken() const { return broken_.has_value(); }

private:
    bool readAhead(std::uint64_t count);
    void readPacket();
    void readPiece();
    void endFile();
    void breakOff(const std::string& reason);
    std::optional<Pcr> pcrOf(std::uint64_t index) const;
    PcrClock startClock();
    void startSpan();

    InputFile file_;
    std::shared_ptr<SkippedBytes> skipped_;
    TsFramer framer_;
    bool fileEnded_ = false;
    std::deque<TsPacket> ahead_;
    std::optional<FileError> broken_;  ///< what ended the file
    bool atEnd_ = false;               ///< of the packets

    std::optional<std::uint16_t> pcrPid_;
    std::optional<PcrClock> clock_;
    std::uint64_t spanLength_ = 0;
    std::uint64_t spanIndex_ = 0;  ///< of the next packet to deliver
};

}  // namespace mvrtpfec
