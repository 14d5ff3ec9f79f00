#include "platform/text/ansi_text.h"

namespace platform {

std::basic_string<WCHAR> wideFromAnsi(std::string_view text) {
    std::basic_string<WCHAR> wide;
    for (const char byte : text) wide.push_back(static_cast<unsigned char>(byte));
    return wide;
}

std::string ansiFromWide(std::basic_string_view<WCHAR> text) {
    std::string narrow;
    for (const WCHAR unit : text) narrow.push_back(unit <= 0xFF ? static_cast<char>(unit) : '?');
    return narrow;
}

}  // namespace platform
