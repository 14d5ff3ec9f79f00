#include <algorithm>
#include <array>

#include <linux/sock_diag.h>
#include <sys/socket.h>

#include "platform/net/datagrams.h"

namespace platform {

namespace {

constexpr std::size_t most = 64;

/// What the system calls take.
class Messages {
public:
    explicit Messages(std::span<const DatagramBuffer> buffers) noexcept
        : count_(std::min(buffers.size(), most)) {
        for (std::size_t i = 0; i < count_; ++i) {
            parts_[i] = {buffers[i].data, buffers[i].size};
            headers_[i] = {};
            headers_[i].msg_hdr.msg_iov = &parts_[i];
            headers_[i].msg_hdr.msg_iovlen = 1;
        }
    }

    mmsghdr* headers() noexcept { return headers_.data(); }
    unsigned count() const noexcept { return static_cast<unsigned>(count_); }

private:
    std::size_t count_;
    std::array<iovec, most> parts_;
    std::array<mmsghdr, most> headers_;
};

}  // namespace

std::size_t receiveDatagrams(SocketHandle socket, std::span<DatagramBuffer> buffers) noexcept {
    Messages messages(buffers);
    // With MSG_TRUNC the lengths are those of the datagrams, whatever the room.
    const int came = recvmmsg(static_cast<int>(socket), messages.headers(), messages.count(),
                              MSG_DONTWAIT | MSG_TRUNC, nullptr);
    if (came <= 0) return 0;
    for (int i = 0; i < came; ++i) buffers[static_cast<std::size_t>(i)].size = messages.headers()[i].msg_len;
    return static_cast<std::size_t>(came);
}

std::size_t sendDatagrams(SocketHandle socket, std::span<const DatagramBuffer> buffers) noexcept {
    std::size_t sent = 0;
    while (sent < buffers.size()) {
        Messages messages(buffers.subspan(sent));
        const int taken =
            sendmmsg(static_cast<int>(socket), messages.headers(), messages.count(), MSG_NOSIGNAL);
        if (taken <= 0) break;
        sent += static_cast<std::size_t>(taken);
    }
    return sent;
}

std::uint32_t droppedDatagrams(SocketHandle socket) noexcept {
    std::array<std::uint32_t, SK_MEMINFO_VARS> memory{};
    socklen_t size = sizeof memory;
    if (getsockopt(static_cast<int>(socket), SOL_SOCKET, SO_MEMINFO, memory.data(), &size) != 0) return 0;
    return memory[SK_MEMINFO_DROPS];
}

}  // namespace platform
