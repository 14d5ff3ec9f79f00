#include "platform/text/ansi_text.h"

namespace platform {

std::basic_string<WCHAR> wideFromAnsi(std::string_view text) {
    const int size = static_cast<int>(text.size());
    const int needed = MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0);
    std::basic_string<WCHAR> wide(static_cast<std::size_t>(needed), WCHAR{});
    MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide.data(), needed);
    return wide;
}

std::string ansiFromWide(std::basic_string_view<WCHAR> text) {
    const int size = static_cast<int>(text.size());
    const int needed = WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), size, narrow.data(), needed, nullptr, nullptr);
    return narrow;
}

}  // namespace platform
