#include "support/log/log_record.h"

#include <array>
#include <chrono>

#include "platform/process/local_time.h"
#include "support/string_format.h"

namespace mvn::log {

namespace {

constexpr std::array<const char*, 7> days{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<const char*, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

}  // namespace

LogTime logTimeNow() {
    using namespace std::chrono;
    const auto since = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    return {since / 1000, static_cast<std::uint32_t>(since % 1000)};
}

const char* monthName(int month) noexcept {
    return months.at(static_cast<std::size_t>(month));
}

std::string timePrefix(const LogTime& time) {
    const std::tm local = platform::localTime(time.seconds);
    return stringFormat("%s %s %2d %02d:%02d:%02d.%03d ", days.at(static_cast<std::size_t>(local.tm_wday)),
                        monthName(local.tm_mon), local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                        static_cast<int>(time.milliseconds));
}

}  // namespace mvn::log
