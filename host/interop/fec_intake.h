#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/interop/fec_format.h"
#include "host/interop/fec_timestamps.h"
#include "mvrtpfec/log_perf.h"

namespace mvrtpfec {

/// Makes FEC packets that come in ours, whichever they are. One thread.
class FecIntake {
public:
    /// Without a format it is told by what comes, again when that changes, and logged.
    FecIntake(std::optional<FecFormat> format, mvn::log::ILogger& log)
        : log_(log), format_(format), isFixed_(format.has_value()) {}

    /// Takes a valid packet, media or FEC, in the order of arrival. False for an FEC packet that can't be
    /// made ours, which is to be left out.
    bool take(RtpPacketView packet);
    /// The same for what may be anything; what is neither is let through for others to judge.
    bool take(std::vector<std::uint8_t>& datagram);

    std::uint64_t leftOut() const noexcept { return leftOut_; }

private:
    // `told` is the format that an FEC packet tells, if it does.
    bool makeOurs(RtpPacketView fec, std::optional<FecFormat> told);
    /// Of an odd group.
    void follow(std::optional<FecFormat> told);
    void setFormat(FecFormat format);

    mvn::log::ILogger& log_;
    std::optional<FecFormat> format_;
    FecFormatBridge bridge_;
    FecTimestamps timestamps_;
    const bool isFixed_;
    std::optional<std::chrono::steady_clock::time_point> logged_;  ///< last
    int untold_ = 0;
    int others_ = 0;  ///< FEC packets of the other format in a row
    std::uint64_t leftOut_ = 0;
};

}  // namespace mvrtpfec
