#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "host/media/picture_closer.h"
#include "host/media/sample_source.h"
#include "host/media/stream_format.h"
#include "host/media/unit_clock.h"
#include "rtp_media/chain/nal_builder.h"

namespace mvrtpfec {

/// How a file is to be read.
struct StreamInputOptions {
    std::filesystem::path path;
    const StreamFormat* format = nullptr;
    std::optional<FrameRate> frameRate;  ///< of video
    bool loop = false;
};

/// An elementary stream file, read no faster than it plays, its units timed on a reference clock.
///
/// H.264 with HRD parameters has only its first picture timed; the packetizer counts on from there by the
/// stream's own messages. Everything else is timed unit by unit, as the program's other commands do it. One
/// thread.
class StreamInput : private NALListener {
public:
    explicit StreamInput(const StreamInputOptions& options);

    /// What a stream is added with: it gives out what the parser finds, timed.
    NALBuilder& units() { return exit_; }

    /// When the next unit is presented, 100 ns on the reference clock. Before the first feedUntil, and when
    /// the clock has gone on without this.
    void startAt(std::int64_t time) { base_ = time - latest_; }
    /// Reads on until the units given out reach this time, or the program is to end; false when the file has
    /// ended. Throws FileError.
    bool feedUntil(std::int64_t time);

    /// How far the units given out reach, 100 ns from the first one of this round, without the gaps of the
    /// stream's own count.
    std::int64_t reached() const { return latest_; }
    /// What of a transport stream had to be passed over in this round; null for other formats.
    SkippedBytes* skipped() { return samples_->skipped(); }
    const StreamFormat& format() const { return *options_.format; }
    const std::filesystem::path& path() const { return options_.path; }

private:
    /// Where timed units leave: what units() gives for a parser, and the last listener of the chain.
    class Exit final : public NALBuilder, public NALListener {
    public:
        void input(IMediaData*) override {}
        void flush() override { endOfStream(); }
        void onNAL(std::unique_ptr<NAL> unit) override { emit(std::move(unit)); }
        void onEndOfStream() override { endOfStream(); }
    };

    void onNAL(std::unique_ptr<NAL> unit) override;
    void onEndOfStream() override {}
    void open();
    SamplePtr nextPart();
    void endRound();
    void lookAtParameters(NAL& unit);
    std::optional<std::int64_t> timeOf(NAL& unit);
    std::int64_t sinceFirst(std::int64_t time);
    bool isH264() const { return options_.format->type == StreamType::h264; }
    NALListener& next() { return isH264() ? static_cast<NALListener&>(closer_) : exit_; }

    StreamInputOptions options_;
    Exit exit_;
    PictureCloser closer_{exit_};
    std::unique_ptr<SampleSource> samples_;
    SamplePtr piece_;           ///< of the file, being given to the parser in parts
    std::size_t partsEnd_ = 0;  ///< of what the parser has of it
    std::unique_ptr<NALBuilder> parser_;
    std::unique_ptr<UnitClock> clock_;
    std::int64_t base_ = 0;
    std::optional<std::int64_t> first_;  ///< time of this round's first unit by the stream's own count
    std::int64_t latest_ = 0;            ///< of all units so far, from first_
    std::int64_t step_ = 0;              ///< between the two latest times
    bool timesItself_ = false;           ///< has HRD messages
    bool anchored_ = false;
};

/// Bits per second of the file's first ten seconds; 0 when that can't be told. Throws FileError.
std::uint32_t estimatedBitRate(const StreamInputOptions& options);

}  // namespace mvrtpfec
