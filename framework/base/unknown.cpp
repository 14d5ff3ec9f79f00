#include "framework/base/unknown.h"

namespace mvrtpfec {

CUnknown::CUnknown(const char* name, IUnknown* outer) noexcept
    : CBaseObject(name), outer_(outer != nullptr ? outer : &inner_) {}

HRESULT CUnknown::NonDelegatingQueryInterface(REFIID riid, void** object) {
    if (object == nullptr) return E_POINTER;
    if (riid == IID_IUnknown) return GetInterface(&inner_, object);
    *object = nullptr;
    return E_NOINTERFACE;
}

ULONG CUnknown::NonDelegatingAddRef() {
    return static_cast<ULONG>(++references_);
}

/// While the destructor runs, a reference taken and released by it must not destroy the object again.
ULONG CUnknown::NonDelegatingRelease() {
    const LONG left = --references_;
    if (left > 0) return static_cast<ULONG>(left);
    references_ = 1;
    OnFinalRelease();
    return 0;
}

void CUnknown::OnFinalRelease() noexcept {
    delete this;  // NOLINT(cppcoreguidelines-owning-memory)
}

HRESULT GetInterface(IUnknown* object, void** result) noexcept {
    if (result == nullptr) return E_POINTER;
    *result = object;
    object->AddRef();
    return S_OK;
}

}  // namespace mvrtpfec
