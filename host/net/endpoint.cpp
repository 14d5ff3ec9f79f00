#include "host/net/endpoint.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>

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
    const std::string host = text.substr(0, colon);
    if (host.find_first_of("[]:") == std::string::npos) return {resolveHost(host, text), port};
    const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    asio::error_code error;
    const auto address = asio::ip::make_address_v6(bracketed ? host.substr(1, host.size() - 2) : "", error);
    if (error) throw UsageError(text + ": has no address (an IPv6 one stands in brackets)");
    return {address, port};
}

std::optional<asio::ip::udp::endpoint> parseNetworkName(const std::string& text) {
    for (const std::string_view scheme : {"udp://", "rtp://"}) {
        if (text.starts_with(scheme)) return parseEndpoint(text.substr(scheme.size()));
    }
    if (text.find("://") != std::string::npos) throw UsageError(text + ": is no udp:// or rtp:// address");
    return std::nullopt;
}

asio::ip::address resolveHost(const std::string& host, const std::string& whole) {
    asio::error_code error;
    const auto address = asio::ip::make_address(host, error);
    if (!error) return address;
    // The system would take 127.1 for an address too, and nothing for itself.
    if (host.find_first_not_of("0123456789.") == std::string::npos)
        throw UsageError(whole + ": has no address");
    asio::io_context context;
    const auto found = asio::ip::udp::resolver(context).resolve(host, "", error);
    if (error == asio::error::host_not_found || error == asio::error::no_data)
        throw UsageError(whole + ": has no address: there is no host '" + host + "'");
    if (error)
        throw std::runtime_error(whole + ": the host '" + host + "' was not found: " + error.message());
    const auto isIpv4 = [](const auto& entry) { return entry.endpoint().address().is_v4(); };
    const auto ipv4 = std::find_if(found.begin(), found.end(), isIpv4);
    return (ipv4 != found.end() ? ipv4 : found.begin())->endpoint().address();
}

}  // namespace mvrtpfec
