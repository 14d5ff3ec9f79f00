#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace mvrtpfec {

/// What a sender report says of a stream.
struct SenderReport {
    std::uint32_t ssrc = 0;
    std::uint64_t wallTime = 0;  ///< ms since 1970
    std::uint32_t rtpTime = 0;
    std::uint32_t packetCount = 0;
    std::uint32_t octetCount = 0;
    std::string_view cname;  ///< at most 255 bytes
};

/// Bytes of the compound packet: a sender report and a source description with the CNAME.
std::size_t senderReportSize(std::string_view cname);

/// Writes it (RFC 3550, 6.4.1 and 6.5.1); `destination` has room for senderReportSize() bytes.
void writeSenderReport(const SenderReport& report, std::uint8_t* destination);

/// `ticks` of 90 kHz at another clock rate (Hz), the lowest 32 bits of it.
std::uint32_t rtpTimeAt(std::uint64_t ticks, std::uint64_t clockRate);

}  // namespace mvrtpfec
