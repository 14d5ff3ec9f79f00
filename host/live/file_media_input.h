#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/io/datagram.h"
#include "host/io/ts_source.h"
#include "host/live/media_input.h"

namespace mvrtpfec {

/// A transport stream from a file or pipe, due by its program clock or by a bit rate. The clock starts with
/// the first packet read. From round to round numbers and timestamps run on, and no packet is short.
class FileMediaInput final : public MediaInput {
public:
    /// Throws FileError.
    FileMediaInput(const std::filesystem::path& path, const MediaInputOptions& options,
                   Clock& clock = systemClock());

    Got read(DuePacket& next) override;
    /// A pipe is read packet by packet; nobody knows when the next one comes.
    bool wouldWait() const override { return isPipe_; }
    std::uint64_t skippedBytes() override { return source_.skipped()->total(); }
    std::vector<std::string> takeNotices() override { return source_.skipped()->takeNotices(); }

private:
    std::chrono::nanoseconds sinceStart() const;
    void begin();
    void number(std::chrono::nanoseconds time);

    MediaInputOptions options_;
    bool isPipe_;
    Clock& clock_;
    TsSource source_;
    Datagram datagram_;
    std::optional<SteadyTime> start_;
    std::uint64_t sent_ = 0;            ///< packets
    std::uint64_t sentBits_ = 0;        ///< of the transport stream
    std::uint32_t firstTimestamp_ = 0;  ///< 90 kHz
};

}  // namespace mvrtpfec
