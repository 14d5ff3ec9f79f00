#include "host/stream/stream_input.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "host/media/record_size.h"
#include "platform/process/signals.h"
#include "rtp_media/bits/bit_reader.h"
#include "rtp_media/chain/sample_bytes.h"
#include "rtp_media/h264/avc_sps.h"

namespace mvrtpfec {

namespace {

std::uint8_t typeOf(NAL& unit) {
    return unit.header() ? unit.header()->value & 0x1F : 0;
}

constexpr bool isSlice(std::uint8_t type) {
    return type == 1 || type == 5;
}

constexpr std::uint8_t sequenceParameterSet = 7;

/// Bytes that the parser gets at a time: of a slow stream a whole piece of the file lasts longer than the
/// sender's window.
constexpr std::size_t partSize = 2048;

/// What a file of one unit lasts when it is looped, 100 ns.
constexpr std::int64_t loneUnit = 400'000;
/// Pictures stand as far out of order at most; what goes back further is a new count.
constexpr std::int64_t longestStepBack = static_cast<std::int64_t>(unitsOfTime) / 2;
constexpr std::int64_t longestStep = 6 * longestStepBack;

struct ByteCounter : NALListener {
    void onNAL(std::unique_ptr<NAL> unit) override { bytes += unit->size(); }
    void onEndOfStream() override {}

    std::uint64_t bytes = 0;
};

}  // namespace

StreamInput::StreamInput(const StreamInputOptions& options) : options_(options) {
    open();
}

void StreamInput::open() {
    samples_ = openSamples(options_.path, options_.format->type);
    parser_ = createNALBuilder(options_.format->type);
    parser_->setListener(this);
    clock_ = makeUnitClock(options_.format->type, options_.frameRate);
    first_.reset();
    latest_ = 0;
    anchored_ = false;
}

bool StreamInput::feedUntil(std::int64_t time) {
    while (base_ + latest_ < time && !platform::wasInterrupted()) {
        const SamplePtr part = nextPart();
        if (part == nullptr) {
            endRound();
            if (!options_.loop) return false;
            continue;
        }
        parser_->input(part.p);
    }
    return true;
}

SamplePtr StreamInput::nextPart() {
    if (piece_ == nullptr) {
        piece_ = samples_->read();
        partsEnd_ = 0;
        if (piece_ == nullptr) return {};
    }
    const auto bytes = sampleBytes(*piece_);
    if (bytes.size() <= partSize || isCutIntoRecords(options_.format->type))
        return std::exchange(piece_, nullptr);
    const auto part = bytes.subspan(partsEnd_, std::min(partSize, bytes.size() - partsEnd_));
    SamplePtr copy = sampleOf({part.begin(), part.end()});
    partsEnd_ += part.size();
    if (partsEnd_ == bytes.size()) piece_ = nullptr;
    return copy;
}

/// The next round's first unit comes as long after the last one as that came after the one before.
void StreamInput::endRound() {
    parser_->flush();
    next().onEndOfStream();
    if (!options_.loop) return;
    if (!first_) throw std::runtime_error("there is nothing in the file to go round");
    const std::int64_t step = step_ > 0 ? step_ : latest_;
    base_ += latest_ + (step > 0 ? step : loneUnit);
    open();
}

void StreamInput::onNAL(std::unique_ptr<NAL> unit) {
    if (isH264()) lookAtParameters(*unit);
    if (const auto time = timeOf(*unit)) {
        const std::int64_t since = sinceFirst(*time);
        if (since > latest_) step_ = since - std::exchange(latest_, since);
        const bool anchors = !anchored_ && isSlice(typeOf(*unit));
        unit->timing.hasPts = !timesItself_ || anchors;
        unit->timing.pts = base_ + since;
        anchored_ = anchored_ || anchors;
    }
    next().onNAL(std::move(unit));
}

/// Where the stream's own count jumps, as between films in one file, it goes on without a gap.
std::int64_t StreamInput::sinceFirst(std::int64_t time) {
    if (!first_) first_ = time;
    const std::int64_t ahead = time - *first_ - latest_;
    if (ahead < -longestStepBack || ahead > longestStep) first_ = time - latest_ - step_;
    return time - *first_;
}

std::optional<std::int64_t> StreamInput::timeOf(NAL& unit) {
    if (unit.timing.hasPts) return unit.timing.pts;
    return clock_ != nullptr ? clock_->timeOf(unit) : std::nullopt;
}

void StreamInput::lookAtParameters(NAL& unit) {
    if (options_.frameRate || typeOf(unit) != sequenceParameterSet) return;
    try {
        const auto start = static_cast<std::size_t>(unit.header()->startCodeLength) + 1;
        timesItself_ = parseAvcSps(unit.rbsp().subspan(start)).hrd() != nullptr;
    } catch (const BitstreamException&) {
        // The packetizer drops it too.
    }
}

std::uint32_t estimatedBitRate(const StreamInputOptions& options) {
    StreamInput once({options.path, options.format, options.frameRate, false});
    ByteCounter counter;
    once.units().setListener(&counter);
    once.feedUntil(10 * static_cast<std::int64_t>(unitsOfTime));
    const auto span = static_cast<std::uint64_t>(once.reached());
    if (span == 0) return 0;
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(counter.bytes * 8 * unitsOfTime / span, INT32_MAX));
}

}  // namespace mvrtpfec
