#include "support/log/console_sink.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "platform/process/terminal.h"

namespace mvn::log {

namespace {

/// Console text attributes by level.
constexpr std::array<std::uint16_t, 4> colours{12, 14, 7, 10};

}  // namespace

void ConsoleSink::write(const LogRecord& record) {
    platform::setTextAttribute(colours.at(std::min<std::size_t>(record.level, colours.size() - 1)));
    std::fprintf(stderr, "%s%s\n", timePrefix(record.time).c_str(), record.text.c_str());
    platform::resetTextAttribute();
}

}  // namespace mvn::log
