#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>

#include "host/io/datagram.h"
#include "host/io/ts_source.h"
#include "host/live/media_input.h"

namespace mvrtpfec {

/// A transport stream from a file or pipe, due by its program clock or by a bit rate. The clock starts with
/// the first packet read. From round to round numbers and timestamps run on.
class FileMediaInput final : public MediaInput {
public:
    /// Throws FileError.
    FileMediaInput(const std::filesystem::path& path, const MediaInputOptions& options,
                   Clock& clock = systemClock());

    Got read(DuePacket& next) override;
    bool wouldWait() const override { return false; }

private:
    std::unique_ptr<TsSource> open() const;
    bool readDatagram();
    void startNextRound();
    std::chrono::nanoseconds sinceStart() const;
    void number();

    std::filesystem::path path_;
    MediaInputOptions options_;
    Clock& clock_;
    std::unique_ptr<TsSource> source_;
    Datagram datagram_;
    std::optional<SteadyTime> start_;
    std::uint64_t sent_ = 0;                  ///< packets
    std::uint64_t sentBits_ = 0;              ///< of the transport stream
    std::chrono::nanoseconds roundStart_{0};  ///< of this round, since start_
    std::chrono::nanoseconds latest_{0};      ///< of the packet before, in its round
    std::chrono::nanoseconds step_{0};        ///< between the two packets before
    std::uint32_t timestamp_ = 0;             ///< of the packet before
    std::uint32_t timestampStep_ = 0;
    bool startsRound_ = false;          ///< the next packet does, and it isn't the first round
    std::uint32_t timestampShift_ = 0;  ///< of this round
};

}  // namespace mvrtpfec
