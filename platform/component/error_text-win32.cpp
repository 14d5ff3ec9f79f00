#include "platform/component/error_text.h"

// Exported by quartz.dll; declared here because the MinGW headers leave it out.
extern "C" DWORD WINAPI AMGetErrorTextA(HRESULT code, char* buffer, DWORD capacity);

namespace platform {

std::size_t frameworkErrorText(HRESULT code, ErrorTextBuffer& buffer) noexcept {
    return AMGetErrorTextA(code, buffer.data(), static_cast<DWORD>(buffer.size()));
}

}  // namespace platform
