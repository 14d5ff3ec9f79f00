#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace mvrtpfec {

/// Packets of seven transport packets that a bit rate of the transport stream fills in a second.
double packetRateOf(std::uint64_t bitRate);

/// How rarely a viewer may see a fault, as "one fault in 4h".
struct FaultTarget {
    double faults = 1;
    double span = 0;  ///< seconds, or packets
    bool isInPackets = false;

    /// Media packets for each fault. The bit rate is needed unless the span is in packets.
    double packetsForFault(std::optional<std::uint64_t> bitRate) const;
};

/// The text is "NUMBER fault in SPAN", with "one" or nothing for a number of one, "faults", "per" for "in",
/// and a number with s, min, h, d or packets for a span. Throws std::invalid_argument that tells so.
FaultTarget parseFaultTarget(const std::string& text);

/// "35 s", "12 min", "3.5 h" or "20 d".
std::string spanText(double seconds);

}  // namespace mvrtpfec
