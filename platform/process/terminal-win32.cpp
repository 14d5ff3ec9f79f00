#include <optional>
#include <utility>

#include <fcntl.h>
#include <io.h>

#include "platform/process/terminal.h"
#include "platform/types.h"

namespace platform {

namespace {

std::optional<WORD> before;  ///< the colour, while another is set

}  // namespace

void useBinaryStandardStreams() noexcept {
    for (int descriptor = 0; descriptor <= 2; ++descriptor) _setmode(descriptor, _O_BINARY);
}

bool isErrorTerminal() noexcept {
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(error, &mode) != 0 &&
           SetConsoleMode(error, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void setTextAttribute(std::uint16_t attribute) noexcept {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!before && GetConsoleScreenBufferInfo(output, &info)) before = info.wAttributes;
    SetConsoleTextAttribute(output, attribute);
}

void resetTextAttribute() noexcept {
    if (before) SetConsoleTextAttribute(GetStdHandle(STD_OUTPUT_HANDLE), *std::exchange(before, {}));
}

}  // namespace platform
