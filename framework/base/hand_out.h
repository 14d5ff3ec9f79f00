#pragma once

#include <new>
#include <utility>

#include "platform/hresult.h"

namespace mvrtpfec {

/// Makes an object and gives its first reference to the caller. E_POINTER, E_OUTOFMEMORY.
template <class Object, class Interface, class... Arguments>
HRESULT HandOutNew(Interface** result, Arguments&&... arguments) noexcept {
    if (result == nullptr) return E_POINTER;
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): a reference count owns it from here on.
    auto* object = new (std::nothrow) Object(std::forward<Arguments>(arguments)...);
    *result = object;
    if (object == nullptr) return E_OUTOFMEMORY;
    object->AddRef();
    return S_OK;
}

}  // namespace mvrtpfec
