#include "platform/files/path_text-posix.h"

#include <cstdint>

namespace platform {

namespace {

constexpr std::uint32_t firstEscape = 0xF700;
constexpr std::uint32_t lastEscape = 0xF7FF;

bool isEscape(std::uint32_t codePoint) {
    return codePoint >= firstEscape && codePoint <= lastEscape;
}

std::uint8_t byteAt(std::string_view text, std::size_t at) {
    return static_cast<std::uint8_t>(text[at]);
}

struct Character {
    std::uint32_t codePoint;
    std::size_t length;  ///< bytes; 0 for what is no valid UTF-8 (RFC 3629)
};

Character characterAt(std::string_view text, std::size_t at) {
    const std::uint8_t lead = byteAt(text, at);
    if (lead < 0x80) return {lead, 1};
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || at + length > text.size()) return {lead, 0};
    std::uint32_t codePoint = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const std::uint8_t next = byteAt(text, at + i);
        if ((next & 0xC0) != 0x80) return {lead, 0};
        codePoint = codePoint << 6 | (next & 0x3FU);
    }
    constexpr std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    if (codePoint < least[length] || codePoint > 0x10FFFF || isSurrogate) return {lead, 0};
    return {codePoint, length};
}

void appendUtf8(std::string& text, std::uint32_t codePoint) {
    const auto append = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (codePoint < 0x80) return append(codePoint);
    if (codePoint < 0x800) {
        append(0xC0 | codePoint >> 6);
    } else {
        if (codePoint < 0x10000) {
            append(0xE0 | codePoint >> 12);
        } else {
            append(0xF0 | codePoint >> 18);
            append(0x80 | (codePoint >> 12 & 0x3F));
        }
        append(0x80 | (codePoint >> 6 & 0x3F));
    }
    append(0x80 | (codePoint & 0x3F));
}

/// Calls `take` with the code points of a name, escapes put in.
template <class Take>
void escape(std::string_view name, const Take& take) {
    for (std::size_t at = 0; at < name.size();) {
        const Character next = characterAt(name, at);
        if (next.length == 0 || isEscape(next.codePoint) || next.codePoint == '\\') {
            take(firstEscape + byteAt(name, at));
            ++at;
        } else {
            take(next.codePoint);
            at += next.length;
        }
    }
}

}  // namespace

std::string nativePath(std::string_view path) {
    std::string native;
    for (std::size_t at = 0; at < path.size();) {
        const Character next = characterAt(path, at);
        if (next.length == 0 || !isEscape(next.codePoint)) {
            native += path[at] == '\\' ? '/' : path[at];
            ++at;
        } else {
            native += static_cast<char>(next.codePoint - firstEscape);
            at += next.length;
        }
    }
    return native;
}

std::string nativePath(std::basic_string_view<WCHAR> path) {
    std::string narrow;
    for (std::size_t i = 0; i < path.size(); ++i) {
        std::uint32_t codePoint = path[i];
        const bool isPair =
            (codePoint & 0xFC00) == 0xD800 && i + 1 < path.size() && (path[i + 1] & 0xFC00) == 0xDC00;
        if (isPair) codePoint = 0x10000 + ((codePoint & 0x3FF) << 10 | (path[++i] & 0x3FFU));
        appendUtf8(narrow, codePoint);
    }
    return nativePath(std::string_view(narrow));
}

std::basic_string<WCHAR> wideName(std::string_view name) {
    std::basic_string<WCHAR> wide;
    escape(name, [&](std::uint32_t codePoint) {
        if (codePoint < 0x10000) {
            wide += static_cast<WCHAR>(codePoint);
        } else {
            wide += static_cast<WCHAR>(0xD800 | (codePoint - 0x10000) >> 10);
            wide += static_cast<WCHAR>(0xDC00 | ((codePoint - 0x10000) & 0x3FF));
        }
    });
    return wide;
}

std::string narrowName(std::string_view name) {
    std::string narrow;
    escape(name, [&](std::uint32_t codePoint) { appendUtf8(narrow, codePoint); });
    return narrow;
}

}  // namespace platform
