#include "host/plan/fault_target.h"

#include <charconv>
#include <cmath>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <fmt/format.h>

namespace mvrtpfec {

namespace {

constexpr double bitsOfPacket = 7 * 188 * 8;
constexpr double mostFaults = 1e6;
constexpr double mostPackets = 1e12;

struct Unit {
    std::string_view name;
    double seconds;
};
constexpr Unit units[] = {{"s", 1}, {"min", 60}, {"m", 60}, {"h", 3600}, {"d", 86400}};
constexpr std::string_view packetUnit = "packets";

[[noreturn]] void refuse(const std::string& text) {
    throw std::invalid_argument("'" + text +
                                "' is no target: one fault in 4h, 3 faults in 1d or one fault in 1000000 "
                                "packets are, with s, min, h, "
                                "d or packets");
}

/// The words, a number parted from what stands behind it.
std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        const std::size_t digits = word.find_first_not_of("0123456789.");
        const bool isMixed = digits != 0 && digits != std::string::npos;
        words.push_back(word.substr(0, isMixed ? digits : word.size()));
        if (isMixed) words.push_back(word.substr(digits));
    }
    return words;
}

std::optional<double> numberOf(const std::string& word) {
    if (word == "one") return 1;
    double number = 0;
    const char* const end = word.data() + word.size();
    const auto parsed = std::from_chars(word.data(), end, number, std::chars_format::fixed);
    const bool isNumber = parsed.ec == std::errc() && parsed.ptr == end && number > 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<FaultTarget> targetOf(std::vector<std::string> words) {
    if (!words.empty() && words[0].starts_with("fault")) words.insert(words.begin(), "one");
    if (words.size() != 5) return std::nullopt;
    const bool isSentence =
        (words[1] == "fault" || words[1] == "faults") && (words[2] == "in" || words[2] == "per");
    const auto faults = numberOf(words[0]);
    const auto span = numberOf(words[3]);
    if (!isSentence || !faults || !span || *faults > mostFaults) return std::nullopt;
    if (words[4] == packetUnit) return FaultTarget{*faults, *span, true};
    for (const Unit& unit : units)
        if (words[4] == unit.name) return FaultTarget{*faults, *span * unit.seconds, false};
    return std::nullopt;
}

}  // namespace

double packetRateOf(std::uint64_t bitRate) {
    return static_cast<double>(bitRate) / bitsOfPacket;
}

double FaultTarget::packetsForFault(std::optional<std::uint64_t> bitRate) const {
    return span / faults * (isInPackets ? 1 : packetRateOf(bitRate.value()));
}

FaultTarget parseFaultTarget(const std::string& text) {
    const auto target = targetOf(wordsOf(text));
    if (!target || target->span / target->faults > mostPackets) refuse(text);
    return *target;
}

std::string spanText(double seconds) {
    if (seconds < 100) return fmt::format("{:.3g} s", seconds);
    if (seconds < 100 * 60) return fmt::format("{:.3g} min", seconds / 60);
    if (seconds < 100 * 3600) return fmt::format("{:.3g} h", seconds / 3600);
    return fmt::format("{:.4g} d", seconds / 86400);
}

}  // namespace mvrtpfec
