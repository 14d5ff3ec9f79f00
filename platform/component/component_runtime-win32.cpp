#include "platform/component/component_runtime.h"

namespace platform {

// A thread that belongs to an apartment of its own already stays there.
ComponentRuntime::ComponentRuntime() noexcept
    : entered_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {}

ComponentRuntime::~ComponentRuntime() {
    if (entered_) CoUninitialize();
}

HRESULT createComponent(REFCLSID classId, REFIID riid, void** object) noexcept {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    return CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, riid, object);
}

}  // namespace platform
