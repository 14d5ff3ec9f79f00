#include "host/media/frame_rate.h"

#include <charconv>
#include <cmath>

namespace mvrtpfec {

namespace {

template <class Number>
std::optional<Number> numberOf(std::string_view text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) return std::nullopt;
    return number;
}

constexpr std::uint64_t most = 1000;

}  // namespace

std::optional<FrameRate> parseFrameRate(std::string_view text) {
    FrameRate rate;
    if (const std::size_t slash = text.find('/'); slash != std::string_view::npos) {
        rate.frames = numberOf<std::uint32_t>(text.substr(0, slash)).value_or(0);
        rate.seconds = numberOf<std::uint32_t>(text.substr(slash + 1)).value_or(0);
    } else {
        constexpr double fraction = 1000;
        const double number = numberOf<double>(text).value_or(0);
        if (!(number > 0 && number <= most)) return std::nullopt;
        rate.frames = static_cast<std::uint32_t>(std::lround(number * fraction));
        rate.seconds = static_cast<std::uint32_t>(fraction);
    }
    if (rate.frames == 0 || rate.seconds == 0 || rate.frames > most * rate.seconds ||
        rate.seconds > most * rate.frames)
        return std::nullopt;
    return rate;
}

}  // namespace mvrtpfec
