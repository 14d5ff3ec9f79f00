#pragma once

#include <utility>

#include "platform/component/component.h"

namespace platform {

/// Holds one reference to a component object, or none.
template <class Interface>
class CComPtr {
public:
    CComPtr() noexcept = default;
    /// Takes a reference of its own.
    CComPtr(Interface* object) noexcept : p(object) {
        if (p != nullptr) p->AddRef();
    }
    CComPtr(const CComPtr& other) noexcept : CComPtr(other.p) {}
    CComPtr(CComPtr&& other) noexcept : p(std::exchange(other.p, nullptr)) {}
    ~CComPtr() { Release(); }

    CComPtr& operator=(CComPtr other) noexcept {
        std::swap(p, other.p);
        return *this;
    }

    Interface* operator->() const noexcept { return p; }
    operator Interface*() const noexcept { return p; }

    /// For an out parameter that gives a reference; the pointer must be empty.
    Interface** operator&() noexcept { return &p; }

    void Release() noexcept {
        if (Interface* object = std::exchange(p, nullptr)) object->Release();
    }
    /// Takes over a reference that the caller holds.
    void Attach(Interface* object) noexcept {
        Release();
        p = object;
    }
    /// Gives the reference to the caller.
    [[nodiscard]] Interface* Detach() noexcept { return std::exchange(p, nullptr); }

    HRESULT CopyTo(Interface** object) const noexcept {
        if (object == nullptr) return E_POINTER;
        *object = p;
        if (p != nullptr) p->AddRef();
        return S_OK;
    }

    Interface* p = nullptr;
};

/// Asks an object for another of its interfaces; empty when it has none.
template <class Interface>
CComPtr<Interface> queryFor(IUnknown* object, REFIID riid) noexcept {
    void* found = nullptr;
    CComPtr<Interface> result;
    if (object != nullptr && SUCCEEDED(object->QueryInterface(riid, &found)))
        result.Attach(static_cast<Interface*>(found));
    return result;
}

/// Two interface pointers of one object.
inline bool isSameObject(IUnknown* one, IUnknown* other) noexcept {
    return queryFor<IUnknown>(one, IID_IUnknown).p == queryFor<IUnknown>(other, IID_IUnknown).p;
}

}  // namespace platform
