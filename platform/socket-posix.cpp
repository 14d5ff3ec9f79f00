#include <sys/socket.h>

#include "platform/socket.h"

namespace platform {

bool sendWhole(SocketHandle socket, const char* bytes, std::size_t count) noexcept {
    const auto sent = send(static_cast<int>(socket), bytes, count, MSG_NOSIGNAL);
    return sent >= 0 && static_cast<std::size_t>(sent) == count;
}

}  // namespace platform
