#include "host/commands/progress_bar.h"

#include <algorithm>
#include <string>

#include <fmt/format.h>

#include "host/io/standard_error.h"
#include "platform/process/terminal.h"

namespace mvrtpfec {

namespace {

constexpr auto patience = std::chrono::seconds(1);
constexpr auto interval = std::chrono::milliseconds(100);
/// With its frame and the number within forty columns.
constexpr int width = 30;

}  // namespace

ProgressBar::ProgressBar() : terminal_(platform::isErrorTerminal()), next_(Clock::now() + patience) {}

ProgressBar::~ProgressBar() {
    if (shown_) clearStatus();
}

void ProgressBar::look(double share) {
    const auto now = Clock::now();
    if (now < next_) return;
    next_ = now + interval;
    shown_ = true;
    const int filled = static_cast<int>(std::clamp(share, 0.0, 1.0) * width);
    showStatus(fmt::format("[{}{}] {:3.0f} %", std::string(static_cast<std::size_t>(filled), '#'),
                           std::string(static_cast<std::size_t>(width - filled), '.'), share * 100));
}

}  // namespace mvrtpfec
