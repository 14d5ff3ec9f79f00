#include "host/io/ts_reader.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace mvrtpfec {

namespace {

constexpr std::uint64_t readAheadLimit = 8192;

/// 150 microseconds a packet.
constexpr PacketRate nominalRate{4050, 1};

}  // namespace

TsReader::TsReader(InputFile file) : file_(std::move(file)) {
    readAhead(1);
    if (ahead_.empty()) throwIfBroken();
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
    TsPacket packet;
    errno = 0;
    const std::size_t count = std::fread(packet.bytes.data(), 1, tsPacketSize, file_.stream());
    const std::string place = "byte " + std::to_string(offset_);
    if (std::ferror(file_.stream()) != 0)
        breakOff("cannot read: " + std::generic_category().message(errno));
    else if (count == 0)
        atEnd_ = true;
    else if (!packet.hasSync())
        breakOff(offset_ == 0 ? "not a transport stream: no sync byte 0x47 at its start"
                              : "no sync byte 0x47 at " + place + ", where a packet should start");
    else if (count < tsPacketSize)
        breakOff("truncated: the packet at " + place + " has " + std::to_string(count) + " of 188 bytes");
    else
        ahead_.push_back(packet);
    offset_ += count;
}

void TsReader::breakOff(const std::string& reason) {
    broken_ = FileError(file_.path(), reason);
    atEnd_ = true;
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
