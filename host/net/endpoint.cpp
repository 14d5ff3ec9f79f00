#include "host/net/endpoint.h"

#include <charconv>

#include "host/commands/commands.h"

namespace mvrtpfec {

asio::ip::udp::endpoint parseEndpoint(const std::string& text) {
    const auto colon = text.rfind(':');
    if (colon == std::string::npos) throw UsageError(text + ": is not ADDR:PORT");
    std::uint16_t port = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data() + colon + 1, end, port);
    if (parsed.ec != std::errc() || parsed.ptr != end || port == 0)
        throw UsageError(text + ": has no port from 1 to 65535");
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
