#pragma once
// Narrow strings are UTF-8 and wide strings UTF-16; both functions throw what Text throws.

#include <concepts>
#include <string>
#include <string_view>

#include "support/text.h"

namespace mvn {

/// A 16-bit character: char16_t everywhere, and wchar_t where the system's own wide strings are UTF-16.
template <class Char>
concept WideChar = (std::same_as<Char, char16_t> || std::same_as<Char, wchar_t>)&&sizeof(Char) == 2;

template <WideChar Char>
std::string toNarrow(std::basic_string_view<Char> wide) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(wide.size() * 2);
    for (const Char unit : wide) {
        bytes.push_back(static_cast<std::uint8_t>(unit));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    const Text text(bytes.data(), bytes.size(), TextEncoding::utf16le, TextEncoding::utf8);
    return {text.bytes().begin(), text.bytes().end()};
}

template <WideChar Char>
std::string toNarrow(const std::basic_string<Char>& wide) {
    return toNarrow(std::basic_string_view<Char>(wide));
}

template <WideChar Char = char16_t>
std::basic_string<Char> toWide(std::string_view narrow) {
    const Text text(reinterpret_cast<const std::uint8_t*>(narrow.data()), narrow.size(), TextEncoding::utf8,
                    TextEncoding::utf16le);
    const std::vector<std::uint8_t>& bytes = text.bytes();
    std::basic_string<Char> wide;
    wide.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); i += 2)
        wide.push_back(static_cast<Char>(bytes[i] | bytes[i + 1] << 8));
    return wide;
}

}  // namespace mvn
