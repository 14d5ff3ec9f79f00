#include "rtp_media/send/sender_report.h"

#include <algorithm>

#include "core/big_endian.h"

namespace mvrtpfec {

namespace {

constexpr std::uint64_t secondsFrom1900To1970 = 2208988800;
constexpr std::size_t reportSize = 28;
constexpr std::size_t cnameAt = 38;
constexpr std::uint8_t senderReportType = 200;
constexpr std::uint8_t sourceDescriptionType = 202;
constexpr std::uint8_t cnameItem = 1;

/// One to four zeros end the item list at a 32-bit boundary.
std::size_t padding(std::string_view cname) {
    return 4 - (cname.size() + 2) % 4;
}

void writeReport(const SenderReport& report, std::uint8_t* at) {
    const std::uint64_t fraction = (report.wallTime % 1000 << 32) / 1000;
    at[0] = 0x80;
    at[1] = senderReportType;
    writeBigEndian16(at + 2, reportSize / 4 - 1);
    writeBigEndian32(at + 4, report.ssrc);
    writeBigEndian32(at + 8, static_cast<std::uint32_t>(secondsFrom1900To1970 + report.wallTime / 1000));
    writeBigEndian32(at + 12, static_cast<std::uint32_t>(fraction));
    writeBigEndian32(at + 16, report.rtpTime);
    writeBigEndian32(at + 20, report.packetCount);
    writeBigEndian32(at + 24, report.octetCount);
}

void writeDescription(const SenderReport& report, std::uint8_t* at) {
    at[0] = 0x81;
    at[1] = sourceDescriptionType;
    writeBigEndian16(at + 2, static_cast<std::uint16_t>((report.cname.size() + 2) / 4 + 2));
    writeBigEndian32(at + 4, report.ssrc);
    at[8] = cnameItem;
    at[9] = static_cast<std::uint8_t>(report.cname.size());
    std::uint8_t* const end = std::copy(report.cname.begin(), report.cname.end(), at + 10);
    std::fill_n(end, padding(report.cname), std::uint8_t{0});
}

}  // namespace

std::size_t senderReportSize(std::string_view cname) {
    return cnameAt + cname.size() + padding(cname);
}

void writeSenderReport(const SenderReport& report, std::uint8_t* destination) {
    writeReport(report, destination);
    writeDescription(report, destination + reportSize);
}

std::uint32_t rtpTimeAt(std::uint64_t ticks, std::uint64_t clockRate) {
    const std::uint64_t seconds = ticks / 90000;
    const std::uint64_t rest = ticks % 90000;
    return static_cast<std::uint32_t>(seconds * clockRate + clockRate / 90000 * rest +
                                      rest * (clockRate % 90000) / 90000);
}

}  // namespace mvrtpfec
