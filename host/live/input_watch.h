#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/live/clock.h"

namespace mvrtpfec {

/// Finds words for input from the network that doesn't come or can't be used: within two seconds, and the
/// same again after ten at the earliest. One thread.
class InputWatch {
public:
    InputWatch(std::string name, SteadyTime start) : name_(std::move(name)), start_(start) {}

    /// A datagram was of use.
    void use();
    /// A datagram is of no use, for this reason.
    void leaveOut(std::string why, SteadyTime now);
    /// A datagram has no transport packets, unless later ones show how it is to be cut.
    void doubt(SteadyTime now);
    /// Bytes belong to no packet.
    void skip(std::uint64_t bytes, SteadyTime now) { skipped_.add(bytes, "", now); }

    std::uint64_t leftOut() const { return leftOut_.count; }
    std::uint64_t skippedBytes() const { return skipped_.count; }

    /// To be asked often. Each is one line.
    std::vector<std::string> takeNotices(SteadyTime now);

private:
    struct Tally {
        void add(std::uint64_t more, std::string why, SteadyTime now);
        bool isDue(SteadyTime now) const;
        /// How many since told last.
        std::uint64_t tell(SteadyTime now);

        std::uint64_t count = 0;
        std::string reason;  ///< the latest
        std::uint64_t told = 0;
        std::optional<SteadyTime> since;  ///< of the first that isn't told
        std::optional<SteadyTime> when;   ///< told last
    };

    std::string name_;
    SteadyTime start_;
    bool hasCome_ = false;
    bool silenceTold_ = false;
    Tally leftOut_;
    Tally skipped_;
    Tally doubted_;
};

}  // namespace mvrtpfec
