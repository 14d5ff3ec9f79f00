#include "host/net/endpoint.h"

#include <charconv>

#include "host/usage_error.h"

namespace mvrtpfec {

std::uint16_t parsePort(std::string_view text, const std::string& whole) {
    std::uint16_t port = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, port);
    if (parsed.ec != std::errc() || parsed.ptr != end || port == 0)
        throw UsageError(whole + ": has no port from 1 to 65535");
    return port;
}

asio::ip::udp::endpoint parseEndpoint(const std::string& text) {
    const auto colon = text.rfind(':');
    if (colon == std::string::npos) throw UsageError(text + ": is not ADDR:PORT");
    const std::uint16_t port = parsePort(std::string_view(text).substr(colon + 1), text);
    std::string address = text.substr(0, colon);
    const bool bracketed = address.size() > 2 && address.front() == '[' && address.back() == ']';
    if (bracketed) address = address.substr(1, address.size() - 2);
    asio::error_code error;
    const auto parsedAddress = asio::ip::make_address(address, error);
    if (error || parsedAddress.is_v6() != bracketed)
        throw UsageError(text + ": has no address (an IPv6 one stands in brackets)");
    return {parsedAddress, port};
}

}  // namespace mvrtpfec
