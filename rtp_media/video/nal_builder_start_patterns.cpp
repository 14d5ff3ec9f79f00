#include "rtp_media/video/nal_builder_start_patterns.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "rtp_media/chain/sample_bytes.h"

namespace mvrtpfec {

namespace {

constexpr std::size_t tailLength = StartPattern::longest - 1;

bool matches(const StartPattern& pattern, std::span<const std::uint8_t> bytes) {
    return bytes.size() >= pattern.size() &&
           std::equal(pattern.prefix.begin(), pattern.prefix.end(), bytes.begin()) &&
           (bytes[pattern.prefix.size()] & pattern.mask) == pattern.value;
}

}  // namespace

NALBuilderStartPatterns::NALBuilderStartPatterns(std::span<const StartPattern> patterns)
    : patterns_(patterns) {
    for (const auto& pattern : patterns_)
        mostBefore_ = std::max(mostBefore_, pattern.size() - 1 + pattern.lead);
}

bool NALBuilderStartPatterns::beginsUnit(std::uint8_t, bool) {
    return true;
}

void NALBuilderStartPatterns::input(IMediaData* sample) {
    const auto bytes = sampleBytes(*sample);
    if (bytes.empty()) return;
    try {
        cutter_.append(sample, bytes);
        scan(bytes);
        cutter_.trim(mostBefore_);
    } catch (...) {
        // The listener's failure; what was open is lost with it, what comes is parsed like a new stream.
        reset();
        throw;
    }
}

void NALBuilderStartPatterns::flush() {
    if (cutter_.isOpen()) emit(takeUnit(cutter_, cutter_.size()));
    reset();
    endOfStream();
}

void NALBuilderStartPatterns::scan(std::span<const std::uint8_t> bytes) {
    lastMatchEnd_ = noMatch;
    scanEdge(bytes);
    scanInside(bytes);
    keepTail(bytes);
}

/// Patterns that begin before the sample and end in it.
void NALBuilderStartPatterns::scanEdge(std::span<const std::uint8_t> bytes) {
    std::array<std::uint8_t, 2 * tailLength> around{};
    std::copy_n(tail_, tailSize_, around.begin());
    const std::size_t following = std::min(tailLength, bytes.size());
    std::copy_n(bytes.begin(), following, around.begin() + static_cast<std::ptrdiff_t>(tailSize_));
    const std::span<const std::uint8_t> all(around.data(), tailSize_ + following);
    for (std::size_t i = 0; i < tailSize_; ++i) {
        for (const auto& pattern : patterns_) {
            if (i + pattern.size() > tailSize_ && matches(pattern, all.subspan(i)))
                matchAt(static_cast<std::ptrdiff_t>(i) - static_cast<std::ptrdiff_t>(tailSize_), pattern,
                        all[i + pattern.size() - 1]);
        }
    }
}

void NALBuilderStartPatterns::scanInside(std::span<const std::uint8_t> bytes) {
    const std::uint8_t first = patterns_.front().prefix.front();
    std::size_t at = 0;
    while (const void* const found = std::memchr(bytes.data() + at, first, bytes.size() - at)) {
        at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data());
        for (const auto& pattern : patterns_) {
            if (matches(pattern, bytes.subspan(at)))
                matchAt(static_cast<std::ptrdiff_t>(at), pattern, bytes[at + pattern.size() - 1]);
        }
        ++at;
    }
}

/// Earlier beginnings come first, so of two matches with one end the first is the longest.
void NALBuilderStartPatterns::matchAt(std::ptrdiff_t index, const StartPattern& pattern, std::uint8_t last) {
    const std::ptrdiff_t end = index + static_cast<std::ptrdiff_t>(pattern.size());
    if (end == lastMatchEnd_ || !beginsUnit(last, cutter_.isOpen())) return;
    lastMatchEnd_ = end;
    // A unit that began with less in front of its pattern than there should be has what there is.
    const auto available = static_cast<std::ptrdiff_t>(cutter_.sizeUpTo(index));
    const std::ptrdiff_t begin = index - std::min(static_cast<std::ptrdiff_t>(pattern.lead), available);
    if (cutter_.isOpen()) {
        const std::size_t size = cutter_.sizeUpTo(begin);
        if (size == 0) return;
        emit(takeUnit(cutter_, size));
    }
    cutter_.beginAt(begin);
}

void NALBuilderStartPatterns::keepTail(std::span<const std::uint8_t> bytes) {
    const std::size_t fresh = std::min(tailLength, bytes.size());
    const std::size_t kept = std::min(tailSize_, tailLength - fresh);
    std::copy_n(tail_ + tailSize_ - kept, kept, tail_);
    std::copy_n(bytes.end() - static_cast<std::ptrdiff_t>(fresh), fresh, tail_ + kept);
    tailSize_ = kept + fresh;
}

void NALBuilderStartPatterns::reset() {
    cutter_.clear();
    tailSize_ = 0;
}

}  // namespace mvrtpfec
