#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/fec_packet.h"

namespace mvrtpfec {

/// What FEC packets tell of their sender.
struct FecFigures {
    std::uint64_t packets = 0;
    std::uint64_t missing = 0;  ///< by the numbers of each FEC stream
    std::uint8_t columns = 0;   ///< L, 0 while unknown
    std::uint8_t rows = 0;      ///< D, 0 until a column FEC packet has told it
    bool hasColumnFec = false;
    bool hasRowFec = false;
};

/// The matrix as learnt: "10 x 10", "L 10" of rows alone, "no FEC yet".
std::string matrixText(const FecFigures& fec);
/// By the packets seen: "row", "column", "both" or "none".
std::string_view modeText(const FecFigures& fec);

/// Watches FEC packets come. One thread.
class FecWatch {
public:
    /// A valid packet of the payload type of FEC; false when it is something else, as any dynamic payload
    /// type may be, and doesn't count.
    bool note(ConstRtpPacketView packet);

    const FecFigures& figures() const noexcept { return figures_; }

private:
    void learnMatrix(FecKind kind, const ProtectedRange& range);
    void countMissing(FecKind kind, std::uint16_t number);

    FecFigures figures_;
    std::array<std::optional<std::uint16_t>, 2> next_;  ///< number of each stream
    int rowsAlone_ = 0;                                 ///< row FEC packets since the last column FEC packet
};

}  // namespace mvrtpfec
