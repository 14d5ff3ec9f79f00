#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace mvrtpfec {

/// Serves one changing text over HTTP/1.1 (RFC 9112) on a thread of its own, for as long as it lives. A few
/// clients at once; a slow or silent one is cut off.
class TextServer {
public:
    struct Page {
        std::string target;  ///< path, as "/metrics"
        std::string contentType;
        std::function<std::string()> text;  ///< called on the server's thread
    };

    /// `address` as text, IPv6 without brackets. Port 0 is any free one. Throws std::system_error.
    TextServer(const std::string& address, std::uint16_t port, Page page);
    ~TextServer();

    TextServer(const TextServer&) = delete;
    TextServer& operator=(const TextServer&) = delete;

    std::uint16_t port() const;

private:
    class Listener;
    std::unique_ptr<Listener> listener_;
};

}  // namespace mvrtpfec
