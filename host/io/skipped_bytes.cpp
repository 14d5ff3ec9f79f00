#include "host/io/skipped_bytes.h"

#include <algorithm>

namespace mvrtpfec {

namespace {

constexpr std::size_t mostPlaces = 10;

}  // namespace

void SkippedBytes::add(std::uint64_t at, std::uint64_t count) {
    total_ += count;
    if (places_.size() > mostPlaces || std::ranges::find(places_, at) != places_.end()) return;
    places_.push_back(at);
    notices_.push_back(streamName_ +
                       (places_.size() > mostPlaces
                            ? ": bytes that belong to no transport packet are counted only from here on"
                            : ": skipped " + std::to_string(count) + " bytes at byte " + std::to_string(at) +
                                  ", which belong to no transport packet"));
}

}  // namespace mvrtpfec
