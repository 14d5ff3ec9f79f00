#include "host/live/input_watch.h"

#include <fmt/format.h>

namespace mvrtpfec {

namespace {

using namespace std::chrono_literals;

constexpr auto longestSilence = 1500ms;
/// More of the same is told with it.
constexpr auto untilTold = 1s;
constexpr auto untilToldAgain = 10s;

}  // namespace

void InputWatch::Tally::add(std::uint64_t more, std::string why, SteadyTime now) {
    if (count == told) since = now;
    count += more;
    reason = std::move(why);
}

bool InputWatch::Tally::isDue(SteadyTime now) const {
    return count > told && now - *since >= untilTold && (!when || now - *when >= untilToldAgain);
}

std::uint64_t InputWatch::Tally::tell(SteadyTime now) {
    when = now;
    return count - std::exchange(told, count);
}

void InputWatch::use() {
    hasCome_ = true;
    doubted_.told = doubted_.count;
}

void InputWatch::leaveOut(std::string why, SteadyTime now) {
    hasCome_ = true;
    leftOut_.add(1, std::move(why), now);
}

void InputWatch::doubt(SteadyTime now) {
    hasCome_ = true;
    doubted_.add(1, "", now);
}

std::vector<std::string> InputWatch::takeNotices(SteadyTime now) {
    std::vector<std::string> notices;
    if (!hasCome_ && !silenceTold_ && now - start_ >= longestSilence) {
        silenceTold_ = true;
        notices.push_back(name_ + ": nothing has come yet");
    }
    if (leftOut_.isDue(now))
        notices.push_back(fmt::format("{}: left out {} datagrams, {} in all: {}", name_, leftOut_.tell(now),
                                      leftOut_.count, leftOut_.reason));
    if (doubted_.isDue(now)) {
        notices.push_back(
            fmt::format("{}: {} datagrams in a row are no transport stream: no sync bytes 0x47 "
                        "stand 188, 192 or 204 bytes apart",
                        name_, doubted_.tell(now)));
        skipped_.tell(now);
    }
    if (skipped_.isDue(now))
        notices.push_back(fmt::format("{}: skipped {} bytes that belong to no transport packet, {} in all",
                                      name_, skipped_.tell(now), skipped_.count));
    return notices;
}

}  // namespace mvrtpfec
