#include <unistd.h>

#include "platform/terminal.h"

namespace platform {

void useBinaryStandardStreams() noexcept {}

bool isErrorTerminal() noexcept {
    return isatty(STDERR_FILENO) == 1;
}

}  // namespace platform
