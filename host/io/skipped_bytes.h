#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace mvrtpfec {

/// Bytes of a transport stream that belong to no packet: how many, and words for the first few places, each
/// told once though the stream is read again.
class SkippedBytes {
public:
    explicit SkippedBytes(std::string streamName) : streamName_(std::move(streamName)) {}

    void add(std::uint64_t at, std::uint64_t count);
    std::uint64_t total() const { return total_; }

    /// Since asked last; each is one line.
    std::vector<std::string> takeNotices() { return std::exchange(notices_, {}); }

private:
    std::string streamName_;
    std::uint64_t total_ = 0;
    std::vector<std::uint64_t> places_;  ///< told
    std::vector<std::string> notices_;
};

}  // namespace mvrtpfec
