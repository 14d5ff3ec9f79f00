#include "host/live/file_media_input.h"

#include <cstdio>
#include <utility>

#include "platform/files.h"

namespace mvrtpfec {

namespace {

constexpr std::uint64_t clockRate = 90000;
constexpr std::uint64_t nanosecondsPerSecond = 1'000'000'000;

std::uint32_t timestampOf(const Datagram& datagram) {
    return readBigEndian32(&datagram.payload[4]);
}

}  // namespace

FileMediaInput::FileMediaInput(const std::filesystem::path& path, const MediaInputOptions& options,
                               Clock& clock)
    : path_(path), options_(options), clock_(clock), source_(open()) {}

std::unique_ptr<TsSource> FileMediaInput::open() const {
    if (path_ == "-")
        return std::make_unique<TsSource>(InputFile(platform::standardInput(), "standard input"));
    return std::make_unique<TsSource>(InputFile(path_));
}

MediaInput::Got FileMediaInput::read(DuePacket& next) {
    if (!readDatagram()) return Got::end;
    number();
    if (!start_) start_ = clock_.now();
    next.due = *start_ + std::chrono::duration_cast<std::chrono::steady_clock::duration>(sinceStart());
    next.packet = std::make_unique<RtpPacket>(datagram_.payload.data(), datagram_.payload.size());
    ++sent_;
    sentBits_ += 8 * (datagram_.payload.size() - rtpHeaderSize);
    return Got::packet;
}

bool FileMediaInput::readDatagram() {
    if (source_->read(datagram_)) return true;
    if (!options_.loop || path_ == "-") return false;
    startNextRound();
    return source_->read(datagram_);
}

/// The first packet of a round follows the last one as that followed the one before.
void FileMediaInput::startNextRound() {
    source_ = open();
    roundStart_ += latest_ + step_;
    latest_ = step_ = std::chrono::nanoseconds(0);
    startsRound_ = true;
}

std::chrono::nanoseconds FileMediaInput::sinceStart() const {
    if (!options_.bitRate) return roundStart_ + datagram_.time;
    const std::uint64_t rate = *options_.bitRate;
    return std::chrono::nanoseconds(sentBits_ / rate * nanosecondsPerSecond +
                                    sentBits_ % rate * nanosecondsPerSecond / rate);
}

void FileMediaInput::number() {
    std::uint32_t timestamp = timestampOf(datagram_);
    if (options_.bitRate) {
        timestamp = static_cast<std::uint32_t>(sentBits_ / *options_.bitRate * clockRate +
                                               sentBits_ % *options_.bitRate * clockRate / *options_.bitRate);
    } else {
        if (std::exchange(startsRound_, false)) timestampShift_ = timestamp_ + timestampStep_ - timestamp;
        timestamp += timestampShift_;
    }
    timestampStep_ = timestamp - timestamp_;
    timestamp_ = timestamp;
    step_ = datagram_.time - latest_;
    latest_ = datagram_.time;
    writeBigEndian16(&datagram_.payload[2], static_cast<std::uint16_t>(options_.firstNumber + sent_));
    writeBigEndian32(&datagram_.payload[4], timestamp);
    writeBigEndian32(&datagram_.payload[8], options_.ssrc);
}

}  // namespace mvrtpfec
