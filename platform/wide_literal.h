#pragma once

#include <array>
#include <cstddef>

#include "platform/types.h"

namespace platform {

/// The text of a literal as the system's 16-bit characters. ASCII only.
template <std::size_t length>
struct WideLiteral {
    std::array<WCHAR, length> text{};

    consteval WideLiteral(const char (&narrow)[length]) {
        for (std::size_t i = 0; i < length; ++i) {
            if (narrow[i] < 0) throw "not ASCII";
            text[i] = static_cast<WCHAR>(narrow[i]);
        }
    }
};

/// "Input"_w is a zero-terminated LPCWSTR on every target.
template <WideLiteral literal>
consteval LPCWSTR operator""_w() {
    return literal.text.data();
}

}  // namespace platform
