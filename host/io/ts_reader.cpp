#include "host/io/ts_reader.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include "platform/files/utf8_path.h"
#include "platform/process/signals.h"

namespace mvrtpfec {

namespace {

constexpr std::uint64_t readAheadLimit = 8192;
/// Bytes at a stream's beginning in which its first packet has to be found.
constexpr std::uint64_t searchLimit = 65536;

/// 150 microseconds a packet.
constexpr PacketRate nominalRate{4050, 1};

}  // namespace

TsReader::TsReader(InputFile file) : TsReader(std::move(file), nullptr) {}

TsReader::TsReader(InputFile file, std::shared_ptr<SkippedBytes> skipped)
    : file_(std::move(file)),
      skipped_(skipped ? std::move(skipped)
                       : std::make_shared<SkippedBytes>(platform::utf8From(file_.path()))),
      framer_([this](std::uint64_t at, std::uint64_t count) { skipped_->add(at, count); }) {
    while (ahead_.empty() && !atEnd_ && framer_.skipping() <= searchLimit) readPacket();
    if (!ahead_.empty()) return;
    throwIfBroken();
    throw FileError(file_.path(),
                    "not a transport stream: no sync bytes 0x47 stand 188, 192 or 204 bytes apart");
}

std::optional<TimedTsPacket> TsReader::next() {
    if (!readAhead(1)) return std::nullopt;
    if (spanIndex_ == spanLength_) startSpan();
    TimedTsPacket packet{ahead_.front(), clock_->rtpTimestamp(spanIndex_), clock_->elapsed(spanIndex_)};
    ahead_.pop_front();
    ++spanIndex_;
    return packet;
}

void TsReader::throwIfBroken() const {
    if (broken_) throw *broken_;
}

/// Makes the packets read ahead at least `count`; false when the file ends before.
bool TsReader::readAhead(std::uint64_t count) {
    while (ahead_.size() < count && !atEnd_) readPacket();
    return ahead_.size() >= count;
}

void TsReader::readPacket() {
    while (!fileEnded_ && framer_.held() < TsFramer::lookAhead) readPiece();
    if (const auto packet = framer_.next())
        ahead_.push_back(*packet);
    else if (fileEnded_)
        atEnd_ = true;
    else if (platform::wasInterrupted())
        breakOff("interrupted while the packets were searched");
}

void TsReader::readPiece() {
    std::array<std::uint8_t, TsFramer::lookAhead> piece;
    errno = 0;
    const std::size_t wanted = TsFramer::lookAhead - framer_.held();
    const std::size_t count = std::fread(piece.data(), 1, wanted, file_.stream());
    framer_.push({piece.data(), count});
    if (std::ferror(file_.stream()) != 0)
        breakOff("cannot read: " + std::generic_category().message(errno));
    else if (count < wanted)
        endFile();
}

void TsReader::breakOff(const std::string& reason) {
    broken_ = FileError(file_.path(), reason);
    endFile();
}

void TsReader::endFile() {
    fileEnded_ = true;
    framer_.end();
}

std::optional<Pcr> TsReader::pcrOf(std::uint64_t index) const {
    const std::optional<Pcr> pcr = ahead_[index].pcr();
    return pcr && (!pcrPid_ || pcr->pid == *pcrPid_) ? pcr : std::nullopt;
}

/// Rate and start are those of the first two clock references that belong together.
PcrClock TsReader::startClock() {
    std::optional<Pcr> first;
    std::uint64_t firstIndex = 0;
    std::optional<PacketRate> rate;
    std::uint64_t previousIndex = 0;
    std::uint64_t previousTicks = 0;
    for (std::uint64_t i = 0; i < readAheadLimit && !rate && readAhead(i + 1); ++i) {
        const std::optional<Pcr> pcr = pcrOf(i);
        if (!pcr) continue;
        if (first) {
            rate = PcrClock::rateBetween(previousTicks, *pcr, i - previousIndex);
        } else {
            first = pcr;
            firstIndex = i;
            pcrPid_ = pcr->pid;
        }
        previousIndex = i;
        previousTicks = pcr->ticks;
    }
    const PacketRate found = rate.value_or(nominalRate);
    if (!first) return PcrClock(0, found);
    return PcrClock((first->ticks + pcrModulus - found.ticksIn(firstIndex)) % pcrModulus, found);
}

/// The span begins with the next packet to deliver and ends before the next clock reference.
void TsReader::startSpan() {
    if (!clock_) clock_ = startClock();
    std::optional<Pcr> end;
    std::uint64_t length = 1;
    while (length < readAheadLimit && readAhead(length + 1) && !(end = pcrOf(length))) ++length;
    if (end)
        pcrPid_ = end->pid;
    else
        pcrPid_.reset();
    clock_->advance(length, end);
    spanLength_ = length;
    spanIndex_ = 0;
}

}  // namespace mvrtpfec
