#pragma once

#include "platform/threads/sync.h"

namespace mvrtpfec {

/// A failed HRESULT thrown by the class library's wrappers. No std::exception, as in that library: entry
/// points and creation functions catch it by name.
class CAtlException {
public:
    explicit CAtlException(HRESULT result) noexcept : m_hr(result) {}
    operator HRESULT() const noexcept { return m_hr; }

    const HRESULT m_hr;
};

/// Throws CAtlException with the calling thread's last error.
[[noreturn]] inline void throwLastError() {
    throw CAtlException(HRESULT_FROM_WIN32(GetLastError()));
}

}  // namespace mvrtpfec
