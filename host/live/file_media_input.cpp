#include "host/live/file_media_input.h"

#include <utility>

#include "host/live/looped_ts_reader.h"
#include "platform/files/files.h"
#include "platform/files/utf8_path.h"

namespace mvrtpfec {

namespace {

constexpr std::uint64_t nanosecondsPerSecond = 1'000'000'000;

std::unique_ptr<TimedTsPackets> openPackets(const std::filesystem::path& path, bool loop) {
    if (path == "-")
        return std::make_unique<TsReader>(InputFile(platform::standardInput(), "standard input"));
    const auto skipped = std::make_shared<SkippedBytes>(platform::utf8From(path));
    const auto open = [path, skipped] { return std::make_unique<TsReader>(InputFile(path), skipped); };
    if (loop) return std::make_unique<LoopedTsReader>(open);
    return open();
}

/// In 90 kHz.
std::uint32_t ticksOf(std::chrono::nanoseconds time) {
    return static_cast<std::uint32_t>(time.count() / 100'000 * 9 + time.count() % 100'000 * 9 / 100'000);
}

}  // namespace

FileMediaInput::FileMediaInput(const std::filesystem::path& path, const MediaInputOptions& options,
                               Clock& clock)
    : options_(options), isPipe_(path == "-"), clock_(clock), source_(openPackets(path, options.loop)) {}

MediaInput::Got FileMediaInput::read(DuePacket& next) {
    if (!source_.read(datagram_)) return Got::end;
    if (!start_) begin();
    const std::chrono::nanoseconds time = sinceStart();
    number(time);
    next.due = *start_ + std::chrono::duration_cast<std::chrono::steady_clock::duration>(time);
    next.packet = std::make_unique<RtpPacket>(datagram_.payload.data(), datagram_.payload.size());
    ++sent_;
    sentBits_ += 8 * (datagram_.payload.size() - rtpHeaderSize);
    return Got::packet;
}

void FileMediaInput::begin() {
    start_ = clock_.now();
    firstTimestamp_ = readBigEndian32(&datagram_.payload[4]);
}

std::chrono::nanoseconds FileMediaInput::sinceStart() const {
    if (!options_.bitRate) return datagram_.time;
    const std::uint64_t rate = *options_.bitRate;
    const double rest = static_cast<double>(sentBits_ % rate) / static_cast<double>(rate);
    return std::chrono::nanoseconds(sentBits_ / rate * nanosecondsPerSecond +
                                    static_cast<std::uint64_t>(rest * nanosecondsPerSecond));
}

/// By the time of sending, which runs on over the rounds and over breaks of the program clock.
void FileMediaInput::number(std::chrono::nanoseconds time) {
    writeBigEndian16(&datagram_.payload[2], static_cast<std::uint16_t>(options_.firstNumber + sent_));
    writeBigEndian32(&datagram_.payload[4], firstTimestamp_ + ticksOf(time));
    writeBigEndian32(&datagram_.payload[8], options_.ssrc);
}

}  // namespace mvrtpfec
