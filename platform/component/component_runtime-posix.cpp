#include "platform/component/component_runtime.h"

namespace platform {

ComponentRuntime::ComponentRuntime() noexcept = default;
ComponentRuntime::~ComponentRuntime() = default;

HRESULT createComponent(REFCLSID /*classId*/, REFIID /*riid*/, void** object) noexcept {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    return REGDB_E_CLASSNOTREG;
}

}  // namespace platform
