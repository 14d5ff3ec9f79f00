#include <winsock2.h>

#include "platform/socket.h"

namespace platform {

bool sendWhole(SocketHandle socket, const char* bytes, std::size_t count) noexcept {
    const int sent = send(static_cast<SOCKET>(socket), bytes, static_cast<int>(count), 0);
    return sent >= 0 && static_cast<std::size_t>(sent) == count;
}

}  // namespace platform
