#pragma once

#include "platform/module/memory_registration.h"

namespace platform {

/// A filter mapper of either generation over a list in memory, which must outlive it. It knows the default
/// category alone and no named instances (E_NOTIMPL). CLSID_FilterMapper2 or CLSID_FilterMapper;
/// REGDB_E_CLASSNOTREG, E_NOINTERFACE, E_OUTOFMEMORY.
HRESULT createMemoryFilterMapper(MemoryRegistration& list, REFCLSID classId, REFIID riid, void** object);

}  // namespace platform
