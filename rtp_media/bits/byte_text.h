#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace mvrtpfec {

/// Base64 with padding (RFC 4648, 4). `separator` stands after every 64 groups of four characters.
std::string toBase64(std::span<const std::uint8_t> bytes, std::string_view separator = {});

/// Two digits a byte.
std::string toLowerHex(std::span<const std::uint8_t> bytes);
std::string toUpperHex(std::span<const std::uint8_t> bytes);

}  // namespace mvrtpfec
