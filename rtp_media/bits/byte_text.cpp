#include "rtp_media/bits/byte_text.h"

#include <algorithm>

namespace mvrtpfec {

namespace {

std::string toHex(std::span<const std::uint8_t> bytes, std::string_view digits) {
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

/// Four characters for one to three bytes.
void appendGroup(std::string& text, std::span<const std::uint8_t> group) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 3; ++i) word = word << 8 | (i < group.size() ? group[i] : 0U);
    for (std::size_t i = 0; i < 4; ++i) {
        text += i <= group.size() ? alphabet[word >> (18 - 6 * i) & 63] : '=';
    }
}

}  // namespace

std::string toBase64(std::span<const std::uint8_t> bytes, std::string_view separator) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0, groups = 0; at < bytes.size(); at += 3) {
        appendGroup(text, bytes.subspan(at, std::min<std::size_t>(3, bytes.size() - at)));
        if (++groups % 64 == 0) text += separator;
    }
    return text;
}

std::string toLowerHex(std::span<const std::uint8_t> bytes) {
    return toHex(bytes, "0123456789abcdef");
}

std::string toUpperHex(std::span<const std::uint8_t> bytes) {
    return toHex(bytes, "0123456789ABCDEF");
}

}  // namespace mvrtpfec
