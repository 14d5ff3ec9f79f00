#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// What went by of a stream's units.
struct UnitFigures {
    std::uint64_t units = 0;
    std::uint64_t bytes = 0;
    std::map<std::string, std::uint64_t> kinds;  ///< how many of each
    std::optional<std::int64_t> first;           ///< earliest and latest time, 100 ns
    std::optional<std::int64_t> last;

    /// From the earliest unit to the latest, in seconds.
    double span() const;
};

/// Counts units on their way to the next listener. Neither is owned.
class UnitCounter : public NALListener {
public:
    using Look = std::function<void(const NAL& unit, const std::string& kind)>;

    /// `look`, if any, sees each unit; a null listener drops them.
    UnitCounter(NALListener* next, Look look) : next_(next), look_(std::move(look)) {}

    void onNAL(std::unique_ptr<NAL> unit) override;
    void onEndOfStream() override;

    const UnitFigures& figures() const { return figures_; }

private:
    NALListener* next_;
    Look look_;
    UnitFigures figures_;
};

}  // namespace mvrtpfec
