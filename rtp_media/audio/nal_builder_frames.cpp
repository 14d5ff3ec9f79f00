#include "rtp_media/audio/nal_builder_frames.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "rtp_media/chain/sample_bytes.h"

namespace mvrtpfec {

NALBuilderFrames::NALBuilderFrames(std::uint8_t firstByte, std::size_t mostHeader) : firstByte_(firstByte) {
    header_.reserve(mostHeader);
}

void NALBuilderFrames::input(IMediaData* sample) {
    const auto bytes = sampleBytes(*sample);
    if (bytes.empty()) return;
    try {
        pending_.append(sample, bytes);
        scan(bytes);
    } catch (...) {
        // The listener's failure; what was open is lost with it, what comes is parsed like a new stream.
        reset();
        throw;
    }
}

void NALBuilderFrames::flush() {
    reset();
    endOfStream();
}

void NALBuilderFrames::scan(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        if (frameSize_ != 0) {
            bytes = bytes.subspan(collectFrame(bytes));
        } else {
            if (header_.empty()) bytes = bytes.subspan(skipToFirstByte(bytes));
            bytes = bytes.subspan(collectHeader(bytes));
        }
    }
}

std::size_t NALBuilderFrames::skipToFirstByte(std::span<const std::uint8_t> bytes) {
    const void* const found = std::memchr(bytes.data(), firstByte_, bytes.size());
    const std::size_t skipped =
        found == nullptr ? bytes.size()
                         : static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data());
    pending_.discard(skipped);
    return skipped;
}

std::size_t NALBuilderFrames::collectHeader(std::span<const std::uint8_t> bytes) {
    const std::size_t taken = std::min(headerWanted_ - header_.size(), bytes.size());
    header_.insert(header_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(taken));
    judgeHeader();
    return taken;
}

std::size_t NALBuilderFrames::collectFrame(std::span<const std::uint8_t> bytes) {
    const std::size_t taken = std::min(missing_, bytes.size());
    missing_ -= taken;
    if (missing_ == 0) emit(takeUnit(pending_, std::exchange(frameSize_, 0)));
    return taken;
}

/// Goes through header_ until more bytes are needed to tell, for its header or for the rest of its frame. A
/// long header that was none may hold whole frames.
void NALBuilderFrames::judgeHeader() {
    while (!header_.empty()) {
        const Finding found = inspect(header_);
        if (found.headerSize > header_.size()) {
            headerWanted_ = found.headerSize;
            return;
        }
        if (found.frameSize == 0) {
            pending_.discard(1);
            giveUpHeader(1);
        } else if (found.frameSize > header_.size()) {
            frameSize_ = found.frameSize;
            missing_ = frameSize_ - header_.size();
            giveUpHeader(header_.size());
        } else {
            emit(takeUnit(pending_, found.frameSize));
            giveUpHeader(found.frameSize);
        }
    }
    headerWanted_ = 1;
}

void NALBuilderFrames::giveUpHeader(std::size_t count) {
    header_.erase(header_.begin(), header_.begin() + static_cast<std::ptrdiff_t>(count));
}

void NALBuilderFrames::reset() {
    pending_.clear();
    header_.clear();
    headerWanted_ = 1;
    frameSize_ = 0;
    missing_ = 0;
}

}  // namespace mvrtpfec
