#pragma once

#include <new>
#include <utility>

#include "platform/threads/wait_object-posix.h"

namespace platform {

/// Makes an object for a new handle; null, and the last error set, when there is no memory.
template <class Object, class... Arguments>
Object* newHandle(Arguments&&... arguments) noexcept {
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory)
    auto* object = new (std::nothrow) Object(std::forward<Arguments>(arguments)...);
    if (object == nullptr) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return object;
}

}  // namespace platform
