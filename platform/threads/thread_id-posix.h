#pragma once

#include "platform/types.h"

namespace platform {

/// An identifier for a thread that is about to be made.
DWORD newThreadId() noexcept;

/// Gives the calling thread its identifier, before it asks for it.
void setThreadId(DWORD id) noexcept;

}  // namespace platform
