#include <cstdio>

#include <unistd.h>

#include "platform/process/terminal.h"

namespace platform {

void useBinaryStandardStreams() noexcept {}

bool isErrorTerminal() noexcept {
    return isatty(STDERR_FILENO) == 1;
}

void setTextAttribute(std::uint16_t attribute) noexcept {
    if (isatty(STDOUT_FILENO) != 1) return;
    // The attribute's bits are blue, green, red, bright; those of the sequence red, green, blue.
    const int colour = (attribute & 1) << 2 | (attribute & 2) | (attribute & 4) >> 2;
    std::printf("\033[%dm", colour + ((attribute & 8) != 0 ? 90 : 30));
    std::fflush(stdout);
}

void resetTextAttribute() noexcept {
    if (isatty(STDOUT_FILENO) != 1) return;
    std::fputs("\033[0m", stdout);
    std::fflush(stdout);
}

}  // namespace platform
