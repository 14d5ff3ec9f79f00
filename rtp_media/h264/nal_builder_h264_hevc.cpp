#include "rtp_media/h264/nal_builder_h264_hevc.h"

#include <algorithm>
#include <bit>

#include "rtp_media/bits/start_code_search.h"
#include "rtp_media/chain/sample_bytes.h"
#include "rtp_media/h264/nal_h264_hevc.h"

namespace mvrtpfec {

void NALBuilderH264_HEVC::input(IMediaData* sample) {
    const auto bytes = sampleBytes(*sample);
    if (bytes.empty()) return;
    try {
        cutter_.append(sample, bytes);
        if (wholeSamples_) {
            emitUnit(cutter_.size());
        } else {
            scan(bytes);
            afterSample();
        }
    } catch (...) {
        // The listener's failure; what was open is lost with it, what comes is parsed like a new stream.
        reset();
        throw;
    }
}

void NALBuilderH264_HEVC::flush() {
    if (cutter_.isOpen()) emitUnit(cutter_.size());
    reset();
    endOfStream();
}

/// A start code that reaches in from before the sample is seen at one of its first three bytes; from the
/// fourth on, it lies inside.
void NALBuilderH264_HEVC::scan(std::span<const std::uint8_t> bytes) {
    const std::size_t edge = std::min<std::size_t>(3, bytes.size());
    const bool zeroBefore = (tail_ & 0xFF) == 0;
    for (std::size_t i = 0; i < edge; ++i) {
        if (const auto length = startCodeLength(); length != 0)
            startCodeAt(static_cast<std::ptrdiff_t>(i - length));
        tail_ = tail_ << 8 | bytes[i];
    }
    for (std::size_t at = 0;; at += 3) {
        at += findStartCode(bytes.subspan(at));
        if (at + 3 >= bytes.size()) break;
        const bool fourBytes = at > 0 ? bytes[at - 1] == 0 : zeroBefore;
        startCodeAt(static_cast<std::ptrdiff_t>(at) - (fourBytes ? 1 : 0));
    }
    noteTail(bytes.subspan(edge));
}

/// A start code begins at `index` of the sample, or before it when that is negative.
void NALBuilderH264_HEVC::startCodeAt(std::ptrdiff_t index) {
    if (cutter_.isOpen()) emitUnit(cutter_.sizeUpTo(index));
    cutter_.beginAt(index);
}

void NALBuilderH264_HEVC::noteTail(std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes.last(std::min<std::size_t>(4, bytes.size())))
        tail_ = tail_ << 8 | byte;
}

/// Length of the start code that the bytes so far end with; 0 when they don't.
std::size_t NALBuilderH264_HEVC::startCodeLength() const noexcept {
    if (tail_ == 1) return 4;
    return (tail_ & 0xFFFFFF) == 1 ? 3 : 0;
}

/// How many of the last bytes a start code may turn out to have begun with.
std::size_t NALBuilderH264_HEVC::startCodePrefix() const noexcept {
    if (const auto length = startCodeLength(); length != 0) return length;
    return std::min<std::size_t>(3, static_cast<std::size_t>(std::countr_zero(tail_ | 0x1000000)) / 8);
}

void NALBuilderH264_HEVC::afterSample() {
    if (cutter_.isOpen() && unitPerSample_) {
        emitUnit(cutter_.size());
        reset();
    }
    cutter_.trim(startCodePrefix());
}

void NALBuilderH264_HEVC::emitUnit(std::size_t size) {
    if (isHevc_) {
        emit(cutter_.take<NALHEVC>(size));
    } else {
        emit(cutter_.take<NALH264>(size));
    }
}

void NALBuilderH264_HEVC::reset() {
    cutter_.clear();
    tail_ = noTail;
}

}  // namespace mvrtpfec
