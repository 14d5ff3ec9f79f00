#include "host/media/sample_source.h"

#include <string>
#include <utility>
#include <vector>

#include "host/io/file_error.h"
#include "host/io/ts_reader.h"
#include "host/media/record_size.h"
#include "host/media/stream_file.h"
#include "rtp_media/chain/pending_samples.h"

namespace mvrtpfec {

namespace {

using Bytes = std::vector<std::uint8_t>;

class PieceSource : public SampleSource {
public:
    explicit PieceSource(StreamFile file) : file_(std::move(file)) {}

    SamplePtr read() override {
        Bytes bytes;
        if (!file_.read(pieceSize, bytes)) return {};
        return sampleOf(std::move(bytes));
    }
    double progress() const override { return file_.progress(); }

private:
    static constexpr std::size_t pieceSize = 64 * std::size_t{1024};

    StreamFile file_;
};

class RecordSource : public SampleSource {
public:
    RecordSource(StreamFile file, StreamType type) : file_(std::move(file)), type_(type) {}

    SamplePtr read() override;
    double progress() const override { return file_.progress(); }

private:
    std::size_t nextSize();
    bool fill(std::size_t size);

    StreamFile file_;
    StreamType type_;
    Bytes ahead_;
    std::uint64_t offset_ = 0;  ///< in the file, of ahead_
};

SamplePtr RecordSource::read() {
    const std::size_t size = nextSize();
    if (size == 0) return {};
    const auto end = ahead_.begin() + static_cast<std::ptrdiff_t>(size);
    SamplePtr sample = sampleOf(Bytes(ahead_.begin(), end));
    sample->SetSyncPoint(true);
    ahead_.erase(ahead_.begin(), end);
    offset_ += size;
    return sample;
}

/// Of the next record, all of which is read ahead then; 0 at the end.
std::size_t RecordSource::nextSize() {
    fill(1);
    while (!ahead_.empty()) {
        RecordSize found;
        try {
            found = recordSize(type_, ahead_);
        } catch (const std::runtime_error& error) {
            throw FileError(file_.path(), "at byte " + std::to_string(offset_) + ": " + error.what());
        }
        const std::size_t before = ahead_.size();
        const bool isThere = fill(found.size > 0 ? found.size : found.wanted);
        if (found.size > 0 && isThere) return found.size;
        if (ahead_.size() == before) return before;
    }
    return 0;
}

/// Makes the bytes read ahead at least `size`; false when the file ends before.
bool RecordSource::fill(std::size_t size) {
    if (size > PendingSamples::maxUnitSize)
        throw FileError(file_.path(),
                        "the unit at byte " + std::to_string(offset_) + " is longer than 64 MiB");
    return ahead_.size() >= size || (file_.read(size - ahead_.size(), ahead_) && ahead_.size() >= size);
}

class TsPacketSource : public SampleSource {
public:
    explicit TsPacketSource(InputFile file) : reader_(std::move(file)) {}

    SamplePtr read() override {
        const auto packet = reader_.next();
        if (!packet) {
            reader_.throwIfBroken();
            return {};
        }
        SamplePtr sample = sampleOf(Bytes(packet->bytes.begin(), packet->bytes.end()));
        REFERENCE_TIME time = packet->elapsed.count() / 100;
        sample->SetTime(&time, nullptr);
        return sample;
    }
    double progress() const override { return reader_.progress(); }
    SkippedBytes* skipped() override { return reader_.skipped(); }

private:
    TsReader reader_;
};

/// A file that is one unit may be anything.
bool isAnything(StreamType type) {
    return type == StreamType::syncPoint22 || type == StreamType::syncPoint23 ||
           type == StreamType::syncPoint24;
}

void refuseTransportStream(StreamFile& file) {
    const std::size_t distance = transportPacketDistance(file.peek(TsFramer::lookAhead));
    if (distance != 0)
        throw FileError(file.path(), "is a transport stream with packets of " + std::to_string(distance) +
                                         " bytes: name its format mpeg2ts, or take the elementary stream "
                                         "out of it first");
}

}  // namespace

SamplePtr sampleOf(std::vector<std::uint8_t> bytes) {
    SamplePtr sample;
    sample.Attach(new SimpleMediaData(std::move(bytes)));  // NOLINT(cppcoreguidelines-owning-memory)
    return sample;
}

std::unique_ptr<SampleSource> openSamples(const std::filesystem::path& path, StreamType type) {
    InputFile file(path);
    if (type == StreamType::mpeg2ts) return std::make_unique<TsPacketSource>(std::move(file));
    StreamFile stream(std::move(file));
    if (!isAnything(type)) refuseTransportStream(stream);
    if (isCutIntoRecords(type)) return std::make_unique<RecordSource>(std::move(stream), type);
    return std::make_unique<PieceSource>(std::move(stream));
}

}  // namespace mvrtpfec
